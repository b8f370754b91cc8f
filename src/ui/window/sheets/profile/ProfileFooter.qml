import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// How the last save went.
RowLayout {
    id: root

    property string icon
    property string text
    property color color: Theme.gMuted

    Layout.fillWidth: true
    Accessible.name: text
    Accessible.role: Accessible.StaticText
    spacing: Theme.s8

    Icon {
        Layout.alignment: Qt.AlignVCenter
        color: root.color
        name: root.icon
        visible: root.icon !== ""
    }
    AppText {
        Layout.fillWidth: true
        Accessible.ignored: true
        color: Theme.readable(root.color)
        font.pixelSize: Theme.textSmall
        text: root.text
        wrapMode: Text.Wrap
    }
}
