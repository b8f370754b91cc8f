import Zemrak

ScrollPage {
    page: "designer"
}
