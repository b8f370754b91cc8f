import QtQuick
import Zemrak.Kit

// How far something has come, from 0 to 1, growing in reading direction.
Item {
    id: root

    property real value: 0
    property color color: Theme.gPrimary

    Accessible.name: Math.round(value * 100) + "%"
    Accessible.role: Accessible.ProgressBar
    implicitHeight: Theme.px(6)
    implicitWidth: Theme.px(160)

    Rectangle {
        anchors.fill: parent
        color: Theme.groove
        opacity: 0.6
        radius: height / 2
    }
    Rectangle {
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.top: parent.top
        color: root.color
        radius: height / 2
        width: Math.max(0, Math.min(1, root.value)) * parent.width

        Behavior on width {
            NumberAnimation {
                duration: Theme.gentle
            }
        }
    }
}
