import Zemrak

ScrollPage {
    page: "printers"
}
