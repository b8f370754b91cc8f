import QtQuick
import Zemrak.Kit

// What a button stands on, with the ring around the one that has the keyboard.
Rectangle {
    id: root

    property color edge: "transparent"
    property bool ringed: false

    border.color: edge
    border.width: edge.a > 0 ? Theme.stroke : 0
    radius: Theme.radiusControl

    Behavior on color {
        ColorAnimation {
            duration: Theme.quick
        }
    }
    FocusRing {
        shown: root.ringed
    }
}
