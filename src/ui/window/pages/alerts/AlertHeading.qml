import QtQuick
import Zemrak.Kit
import Zemrak.Window

// The head of a group of alerts.
Item {
    id: root

    required property string section

    implicitHeight: label.implicitHeight + Theme.s16 + Theme.s4

    LineText {
        id: label
        Accessible.role: Accessible.Heading
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.s8
        anchors.left: parent.left
        anchors.right: parent.right
        font.pixelSize: Theme.textHeadline
        value: root.section === "active" ? Ui.session.alerts.alerts.activeHeading : "السجل"
        weight: Font.Bold
    }
}
