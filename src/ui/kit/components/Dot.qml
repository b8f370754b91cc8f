import Zemrak.Kit

// A round mark in a state's colour. An icon, since the software renderer draws so small a rectangle with corners.
Icon {
    property real diameter: Theme.px(8)

    name: "circle.fill"
    size: diameter * 256 / 208 // what the symbol leaves free around its disc
}
