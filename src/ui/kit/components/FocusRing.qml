import QtQuick
import Zemrak.Kit

// Around the control it is a child of, while the keyboard is on it.
Rectangle {
    property bool shown: false
    property real around: Theme.radiusControl

    anchors.fill: parent
    anchors.margins: -3
    border.color: Theme.gPrimary
    border.width: Theme.ring
    color: "transparent"
    radius: around + 3
    visible: shown
    z: 1
}
