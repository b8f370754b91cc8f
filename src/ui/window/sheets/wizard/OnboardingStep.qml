import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// What one step asks, and why.
OnboardingPage {
    id: root

    required property var info

    colors: info.colors
    icon: info.icon
    text: info.text
    title: info.title

    Rectangle {
        Layout.alignment: Qt.AlignHCenter
        Layout.maximumWidth: parent.width
        Layout.preferredWidth: note.implicitWidth + 2 * Theme.s16
        Layout.topMargin: Theme.s8
        color: Theme.tint(Theme.onFill, 0.07)
        implicitHeight: note.implicitHeight + 2 * Theme.s12
        radius: Theme.radiusControl
        visible: root.info.note !== ""

        RowLayout {
            id: note
            anchors.left: parent.left
            anchors.leftMargin: Theme.s16
            anchors.right: parent.right
            anchors.rightMargin: Theme.s16
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.s12

            Icon {
                Layout.alignment: Qt.AlignTop
                color: Theme.named(root.info.noteColor)
                name: root.info.noteIcon
            }
            AppText {
                Layout.fillWidth: true
                color: Theme.tint(Theme.onFill, 0.82)
                text: "\u200f" + root.info.note
                wrapMode: Text.Wrap
            }
        }
    }
}
