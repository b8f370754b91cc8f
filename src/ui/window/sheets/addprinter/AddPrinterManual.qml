import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// A network printer whose address the person knows.
Card {
    id: root

    required property AddPrinterPresenter presenter

    Layout.fillWidth: true
    icon: "keyboard"
    title: "إدخال يدوي"

    InputRow {
        label: "الاسم"
        placeholder: "Kitchen"
        text: root.presenter.__name

        onAccepted: root.presenter.addManual()
        onEdited: text => root.presenter.__name = text
    }
    InputRow {
        label: "عنوان IP"
        placeholder: "192.168.1.50"
        problem: root.presenter.hostProblem
        text: root.presenter.__host

        onAccepted: root.presenter.addManual()
        onEdited: text => root.presenter.__host = text
    }
    InputRow {
        label: "المنفذ"
        placeholder: "9100"
        problem: root.presenter.portProblem
        text: root.presenter.__port

        onAccepted: root.presenter.addManual()
        onEdited: text => root.presenter.__port = text
    }
    PrimaryButton {
        Layout.alignment: Qt.AlignRight
        busy: root.presenter.addingManual
        enabled: root.presenter.canAddManual
        symbol: "plus"
        text: "إضافة"

        onClicked: root.presenter.addManual()
    }
}
