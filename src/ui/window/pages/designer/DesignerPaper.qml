pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit
import Zemrak.Window

// The receipt as it comes out of the printer, as wide as its paper is to the widest one. White whatever the appearance:
// it is paper. Up and Down scroll it.
Rectangle {
    id: root

    readonly property int widestMm: 80
    readonly property int dotsPerMm: 8
    readonly property real widest: Math.min(width - 2 * Theme.s8, Theme.px(400))
    readonly property real dot: widest / (widestMm * dotsPerMm)
    readonly property real edge: (sheet.width - DesignerPresenter.paperDots * dot) / 2

    border.color: list.activeFocus ? Theme.gPrimary : "transparent"
    border.width: list.activeFocus ? Theme.ring : 0
    color: Theme.well
    implicitHeight: list.contentHeight + 2 * Theme.s24 + 2 * Theme.s12
    radius: Theme.radiusControl

    Rectangle {
        id: sheet
        anchors.horizontalCenter: parent.horizontalCenter
        border.color: Theme.dark ? "transparent" : Theme.gBorder
        border.width: Theme.stroke
        color: Theme.paper
        height: Math.min(list.contentHeight + 2 * Theme.s24, root.height - 2 * Theme.s12)
        width: DesignerPresenter.__doc.paperWidthMm * root.dotsPerMm * root.dot
        y: Theme.s12

        ListView {
            id: list

            function scrollBy(way: real): void {
                const first = originY - topMargin;
                contentY = Math.max(first, Math.min(contentY + way, originY + contentHeight + bottomMargin - height));
            }

            Accessible.name: "الورقة"
            Accessible.role: Accessible.List
            activeFocusOnTab: interactive
            anchors.bottomMargin: Theme.s4
            anchors.fill: parent
            anchors.leftMargin: root.edge
            anchors.rightMargin: root.edge
            anchors.topMargin: Theme.s4
            bottomMargin: Theme.s20
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            currentIndex: -1 // the list has the keyboard, not a line of it
            highlightFollowsCurrentItem: false
            interactive: contentHeight + topMargin + bottomMargin > height
            keyNavigationEnabled: false
            model: DesignerPresenter.preview
            topMargin: Theme.s20

            T.ScrollBar.vertical: AppScrollBar {
                anchors.right: parent.right
                height: root.height - 2 * Theme.s4
                parent: root
                y: Theme.s4
            }
            RowOrder {
                view: list
            }

            delegate: DesignerPaperLine {
                dot: root.dot
                width: ListView.view.width
            }

            Keys.onDownPressed: scrollBy(Theme.px(60))
            Keys.onUpPressed: scrollBy(-Theme.px(60))
        }
    }
}
