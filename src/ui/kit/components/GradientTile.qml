import QtQuick
import QtQuick.Window
import Zemrak.Kit

// A rounded ground that goes from one colour at its top to another at its bottom.
Item {
    id: root

    property var colors: [] // from the first to the second
    property real radius: Theme.radiusControl
    readonly property real pixels: Screen.devicePixelRatio

    function hexOf(shade: color): string {
        return String(shade).slice(-6);
    }

    Accessible.ignored: true

    Image {
        anchors.fill: parent
        source: root.colors.length < 2 || root.width <= 0 || root.height <= 0 ? "" : "image://gradient/" + root.hexOf(root.colors[0]) + "-" + root.hexOf(root.colors[1]) + "?" + root.radius * root.pixels
        sourceSize.height: root.height * root.pixels
        sourceSize.width: root.width * root.pixels
    }
}
