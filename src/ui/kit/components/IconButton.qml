import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// A symbol to press. `text` is its name for assistive technology and the hint shown on it.
BaseButton {
    id: root

    display: T.AbstractButton.IconOnly
    ground: down ? Theme.pressed : hovered ? Theme.hover : "transparent"
    hint: text
    ink: Theme.gMuted
    leftPadding: 0
    rightPadding: 0
    implicitHeight: Theme.compactHeight
    implicitWidth: Theme.compactHeight

    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            color: root.ink
            name: root.symbol
        }
    }
}
