import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

Card {
    icon: "eye.fill"
    title: "معاينة الورقة"

    DesignerPaper {
        Layout.fillHeight: true
        Layout.fillWidth: true
    }
}
