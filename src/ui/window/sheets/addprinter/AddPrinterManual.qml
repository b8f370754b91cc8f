import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// A network printer whose address the person knows.
Card {
    id: root

    required property PrinterFinder finder

    Layout.fillWidth: true
    icon: "keyboard"
    title: "إدخال يدوي"

    InputRow {
        label: "الاسم"
        placeholder: "Kitchen"
        text: root.finder.__name

        onAccepted: root.finder.addManual()
        onEdited: text => root.finder.__name = text
    }
    InputRow {
        label: "عنوان IP"
        placeholder: "192.168.1.50"
        text: root.finder.__host

        onAccepted: root.finder.addManual()
        onEdited: text => root.finder.__host = text
    }
    InputRow {
        label: "المنفذ"
        placeholder: "9100"
        text: root.finder.__port

        onAccepted: root.finder.addManual()
        onEdited: text => root.finder.__port = text
    }
    PrimaryButton {
        Layout.alignment: Qt.AlignRight
        busy: root.finder.addingManual
        enabled: root.finder.canAddManual
        symbol: "plus"
        text: "إضافة"

        onClicked: root.finder.addManual()
    }
}
