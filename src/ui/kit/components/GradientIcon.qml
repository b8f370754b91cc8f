import QtQuick
import Zemrak.Kit

// A white symbol on a tile that goes from one colour to another.
GradientTile {
    id: root

    property string name
    property real size: Theme.tile

    implicitHeight: size
    implicitWidth: size
    radius: Math.round(size * 0.28)

    Icon {
        anchors.centerIn: parent
        color: Theme.onFill
        name: root.name
        size: Math.round(root.size * 0.55)
    }
}
