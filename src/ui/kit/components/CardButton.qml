import QtQuick
import Zemrak.Kit

// A card that can be pressed as a whole; what it shows is its content item, or children of it.
BaseButton {
    id: root

    property real fade: 1 // of the card, not of its focus ring

    bottomPadding: Theme.s16
    edge: hovered ? Theme.fieldBorderHover : Theme.gBorder
    ground: down ? Qt.tint(Theme.gCard, Theme.pressed) : hovered ? Qt.tint(Theme.gCard, Theme.hover) : Theme.gCard
    leftPadding: Theme.s20
    rightPadding: Theme.s20
    topPadding: Theme.s16

    background: Rectangle {
        border.color: root.edge
        border.width: Theme.stroke
        color: root.ground
        opacity: root.fade
        radius: Theme.radiusCard

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }
    }

    contentItem: Item {
    }

    // Inside the card's edge, where no list clips it.
    FocusRing {
        anchors.margins: 0
        around: Theme.radiusCard - 3
        shown: root.visualFocus
    }
}
