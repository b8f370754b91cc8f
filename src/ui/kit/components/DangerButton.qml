import Zemrak.Kit

// A destructive action; filled where it confirms one.
BaseButton {
    property bool filled: false

    edge: filled ? "transparent" : Theme.tint(Theme.gRed, 0.5)
    ground: filled ? (down ? Theme.dangerFillPressed : hovered ? Theme.dangerFillHover : Theme.dangerFill) : down ? Theme.tint(Theme.gRed, 0.18) : hovered ? Theme.tint(Theme.gRed, 0.10) : "transparent"
    ink: filled ? Theme.onFill : Theme.readable(Theme.gRed)
}
