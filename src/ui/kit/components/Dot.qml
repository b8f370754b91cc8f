import Zemrak.Kit

// A round mark in a state's colour. Drawn as a symbol: the software renderer leaves corners on so small a rectangle.
Icon {
    property real diameter: Theme.px(8)

    name: "circle.fill"
    size: diameter * 256 / 208 // what the symbol leaves free around its disc
}
