import Zemrak.Kit

// An action beside others.
BaseButton {
    edge: hovered ? Theme.fieldBorderHover : Theme.fieldBorder
    ground: down ? Theme.pressed : hovered ? Theme.hover : Theme.gCard
}
