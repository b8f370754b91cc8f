import QtQuick
import QtQuick.Window
import Zemrak.Kit

// A symbol in one colour. Those that point somewhere follow the layout's direction; the others never turn.
Item {
    id: root

    property string name
    property real size: Theme.iconBody
    property color color: Theme.gText
    readonly property bool flipped: Icons.mirrors(name) && !LayoutMirroring.enabled

    function hexOf(shade: color): string {
        return String(shade).slice(-6);
    }

    Accessible.ignored: true
    implicitHeight: size
    implicitWidth: size

    Image {
        anchors.centerIn: parent
        height: root.size
        opacity: root.color.a
        source: root.name === "" ? "" : "image://icon/" + root.name + "?" + root.hexOf(root.color) + (root.flipped ? "&mirror" : "")
        sourceSize.height: root.size * Screen.devicePixelRatio
        sourceSize.width: root.size * Screen.devicePixelRatio
        width: root.size
    }
}
