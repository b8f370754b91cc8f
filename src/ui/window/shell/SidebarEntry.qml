import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Zemrak.Kit

// One page in the sidebar.
T.TabButton {
    id: root

    required property string pageId
    required property string title
    required property string symbol
    required property var tint
    required property int index
    property bool current: false
    property int count: 0

    Accessible.description: count > 0 ? String(count) : ""
    Accessible.name: text
    Accessible.selected: current
    Accessible.onPressAction: root.clicked()

    // The current page decides; a click does not check the button.
    autoExclusive: false
    checkable: false

    // One stop for Tab on the way to the page; the arrow keys reach the other entries. Qt does not take the stop from
    // an item that has the keyboard.
    activeFocusOnTab: current || activeFocus
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    text: title
    implicitHeight: Math.max(Theme.px(44), implicitContentHeight)
    leftPadding: Theme.s12
    rightPadding: Theme.s12

    Keys.onEnterPressed: root.clicked()
    Keys.onReturnPressed: root.clicked()

    background: Rectangle {
        color: root.current ? Theme.selected : root.down ? Theme.pressed : root.hovered ? Theme.hover : "transparent"
        radius: Theme.radiusControl

        FocusRing {
            shown: root.visualFocus
        }
    }
    contentItem: RowLayout {
        spacing: Theme.s12

        GradientIcon {
            colors: root.tint
            name: root.symbol
            size: Theme.px(28)
        }
        LineText {
            Layout.fillWidth: true
            Accessible.ignored: true
            color: root.current ? Theme.readable(Theme.gPrimary) : Theme.gText
            value: root.text
            weight: root.current ? Font.Bold : Font.Medium
        }
        CountBadge {
            count: root.count
        }
    }

    HoverHandler {
        cursorShape: Qt.PointingHandCursor
    }
}
