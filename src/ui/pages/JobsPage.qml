import Zemrak

ScrollPage {
    page: "jobs"
}
