import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

T.ScrollBar {
    id: root

    Accessible.ignored: true
    implicitHeight: 10
    implicitWidth: 10
    minimumSize: 0.06
    padding: 2
    visible: size < 1

    contentItem: Rectangle {
        color: root.pressed ? Theme.gMuted : root.hovered ? Theme.fieldBorderHover : Theme.fieldBorder
        implicitHeight: 6
        implicitWidth: 6
        radius: 3
    }
}
