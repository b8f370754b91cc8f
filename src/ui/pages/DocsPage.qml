import Zemrak

ScrollPage {
    page: "docs"
}
