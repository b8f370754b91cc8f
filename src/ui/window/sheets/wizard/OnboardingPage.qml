import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Zemrak.Kit
import Zemrak.Window

// One page of the wizard: symbol, title, text, and what comes under them; in the middle, or scrolling where it is too tall.
Flickable {
    id: root

    property string icon
    property var colors: []
    property string title
    property string text
    default property alias content: column.data

    function scrollBy(distance: real): void {
        contentY = Math.max(0, Math.min(contentHeight - height, contentY + distance));
    }

    boundsBehavior: Flickable.StopAtBounds
    clip: contentHeight > height
    contentHeight: Math.max(height, column.implicitHeight)
    interactive: contentHeight > height

    T.ScrollBar.vertical: AppScrollBar {
    }

    ColumnLayout {
        id: column
        spacing: Theme.s16
        width: Math.min(root.width - 2 * Theme.s16, Theme.px(600))
        x: (root.width - width) / 2
        y: Math.max(0, (root.contentHeight - implicitHeight) / 2)

        OnboardingIcon {
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: -Theme.s8
            colors: root.colors
            name: root.icon
            size: Math.max(Theme.px(96), Math.min(Theme.px(168), root.height * 0.36))
        }
        AppText {
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
            color: Theme.onFill
            font.pixelSize: Theme.textHero
            horizontalAlignment: Text.AlignHCenter
            text: root.title
            weight: Font.Bold
            wrapMode: Text.Wrap
        }
        AppText {
            Layout.fillWidth: true
            color: Theme.tint(Theme.onFill, 0.82)
            font.pixelSize: Theme.textHeadline
            horizontalAlignment: Text.AlignHCenter
            lineHeight: 1.4
            text: "\u200f" + root.text // right to left, though it may begin with a Latin name
            wrapMode: Text.Wrap
        }
    }
}
