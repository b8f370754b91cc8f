import Zemrak

ScrollPage {
    page: "settings"
}
