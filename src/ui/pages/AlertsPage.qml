import Zemrak

ScrollPage {
    page: "alerts"
}
