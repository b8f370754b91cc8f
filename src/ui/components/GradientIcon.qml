import QtQuick
import Zemrak

// A white symbol on a tile that goes from one colour to another.
Rectangle {
    id: root

    property string name
    property var colors: [] // from the first to the second
    property real size: Theme.tile

    Accessible.ignored: true
    implicitHeight: size
    implicitWidth: size
    radius: Math.round(size * 0.28)

    gradient: Gradient {
        GradientStop {
            color: root.colors.length > 0 ? root.colors[0] : Theme.gMuted
            position: 0
        }
        GradientStop {
            color: root.colors.length > 1 ? root.colors[1] : Theme.gMuted
            position: 1
        }
    }

    Icon {
        anchors.centerIn: parent
        color: Theme.onFill
        name: root.name
        size: Math.round(root.size * 0.55)
    }
}
