import QtQuick
import Zemrak

FocusScope {
    id: root

    signal finish()

    Rectangle {
        anchors.fill: parent
        color: Theme.wizard
    }
    PrimaryButton {
        anchors.centerIn: parent
        focus: true
        text: "ابدأ الاستخدام"

        onClicked: root.finish()
    }
}
