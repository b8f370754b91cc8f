import QtQuick
import Zemrak.Kit

// Shows that something is under way. Does not turn with reduced motion.
Item {
    id: root

    property real size: Theme.iconBody
    property color color: Theme.gPrimary
    readonly property int dots: 8

    Accessible.ignored: true
    implicitHeight: size
    implicitWidth: size

    Item {
        id: wheel
        anchors.centerIn: parent
        height: root.size
        width: root.size

        Repeater {
            model: root.dots

            Rectangle {
                required property int index
                readonly property real turn: 2 * Math.PI * index / root.dots
                readonly property real reach: (root.size - width) / 2

                color: root.color
                height: width
                opacity: 0.2 + 0.8 * index / root.dots
                radius: width / 2
                width: root.size * 0.18
                x: root.size / 2 + reach * Math.cos(turn) - width / 2
                y: root.size / 2 + reach * Math.sin(turn) - height / 2
            }
        }
        Timer {
            interval: 100
            repeat: true
            running: root.visible && Theme.animated

            onTriggered: wheel.rotation = (wheel.rotation + 360 / root.dots) % 360
        }
    }
}
