import Zemrak

Sheet {
    icon: "plus.circle.fill"
    subtitle: "واي فاي / شبكة، USB، أو بلوتوث"
    title: "إضافة طابعة"
}
