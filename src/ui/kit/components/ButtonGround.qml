import QtQuick
import Zemrak.Kit

// The background of a button, with its focus ring.
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
