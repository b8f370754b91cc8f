import Zemrak

Sheet {
    icon: "slider.horizontal.3"
    title: "إعدادات الطابعة"
}
