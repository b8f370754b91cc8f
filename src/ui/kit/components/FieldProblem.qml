import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// What is wrong with the field above it, in one sentence; nothing while that is empty. Told as an alert when it appears.
RowLayout {
    id: root

    property string text
    property color color: Theme.gRed

    Accessible.name: text
    Accessible.role: Accessible.AlertMessage
    Layout.fillWidth: true
    spacing: Theme.s8
    visible: text !== ""

    Icon {
        Layout.alignment: Qt.AlignTop
        color: root.color
        name: "exclamationmark.triangle.fill"
        size: Theme.iconSmall
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
