import QtQuick
import Zemrak.Kit

// What a printer understands, as a small tag.
Rectangle {
    id: root

    property string language

    border.color: Theme.fieldBorder
    border.width: Theme.stroke
    color: "transparent"
    implicitHeight: label.implicitHeight + Theme.s4
    implicitWidth: label.implicitWidth + Theme.s12
    radius: Theme.radiusSmall

    LtrText {
        id: label
        Accessible.ignored: true
        anchors.centerIn: parent
        code: root.language
        color: Theme.gMuted
        font.pixelSize: Theme.textCaption
    }
}
