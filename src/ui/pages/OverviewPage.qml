import Zemrak

ScrollPage {
    page: "overview"
}
