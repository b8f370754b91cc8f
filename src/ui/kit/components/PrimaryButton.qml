import Zemrak.Kit

// The main action of a page or card; only outlined where it is not `filled`.
BaseButton {
    property bool filled: true

    edge: filled ? "transparent" : Theme.gPrimary
    ground: filled ? (down ? Theme.primaryFillPressed : hovered ? Theme.primaryFillHover : Theme.primaryFill) : down ? Theme.tint(Theme.gPrimary, 0.18) : hovered ? Theme.selected : "transparent"
    ink: filled ? Theme.onFill : Theme.readable(Theme.gPrimary)
}
