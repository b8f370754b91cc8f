import QtQuick
import Zemrak.Kit

// A button on the wizard's dark ground, whatever the appearance.
BaseButton {
    id: root

    property bool strong: false

    font.pixelSize: strong ? Theme.textHeadline : Theme.textBody
    font.weight: strong ? Font.Bold : Font.Medium
    ground: strong ? (down ? Theme.primaryFillPressed : hovered ? Theme.primaryFillHover : Theme.primaryFill) : down ? Theme.tint(Theme.onFill, 0.16) : hovered ? Theme.tint(Theme.onFill, 0.08) : "transparent"
    implicitHeight: strong ? Theme.px(52) : Theme.controlHeight
    ink: strong ? Theme.onFill : Theme.tint(Theme.onFill, 0.82)

    background: Rectangle {
        border.color: root.edge
        border.width: root.edge.a > 0 ? Theme.stroke : 0
        color: root.ground
        radius: height / 2

        FocusRing {
            around: parent.height / 2
            border.color: Theme.onFill
            shown: root.visualFocus
        }
    }
}
