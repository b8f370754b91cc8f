pragma ComponentBehavior: Bound

import QtQuick
import Zemrak.Kit

// A step's symbol on its tile, in a halo of the tile's colour.
Item {
    id: root

    property string name
    property var colors: []
    property real size: Theme.px(168)

    implicitHeight: size
    implicitWidth: size

    Repeater {
        model: 3

        Rectangle {
            required property int index

            anchors.centerIn: parent
            color: tile.colors.length > 0 ? tile.colors[0] : Theme.onFill
            height: width
            opacity: 0.05 + 0.02 * index
            radius: width / 2
            width: root.size * (1 - 0.14 * index)
        }
    }
    GradientIcon {
        id: tile
        anchors.centerIn: parent
        colors: root.colors
        name: root.name
        size: Math.round(root.size * 0.5)
    }
}
