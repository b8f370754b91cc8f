import Zemrak

ScrollPage {
    page: "sites"
}
