import QtQuick
import QtQuick.Layouts
import Zemrak

Card {
    icon: "eye.fill"
    title: "معاينة الورقة"

    DesignerPaper {
        Layout.fillHeight: true
        Layout.fillWidth: true
    }
}
