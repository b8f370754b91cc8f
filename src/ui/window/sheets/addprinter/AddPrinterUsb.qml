import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Printers at the USB ports.
Card {
    id: root

    required property AddPrinterPresenter presenter

    icon: "cable.connector"
    title: "طابعات USB"

    PrimaryButton {
        Layout.alignment: Qt.AlignLeft
        busy: !root.presenter.canSearchUsb
        symbol: "magnifyingglass"
        text: "ابحث عن طابعات USB"

        onClicked: root.presenter.searchUsb()
    }
    AddPrinterHits {
        hits: root.presenter.__usb

        onAdd: row => root.presenter.addUsb(row)
    }
    AddPrinterProgress {
        hint: root.presenter.usbHint
        outcome: root.presenter.usbOutcome
        scanning: root.presenter.__scanning
    }
    Note {
        Layout.fillWidth: true
        icon: "info.circle"
        text: "ينشئ طابور CUPS خام بدون تعريف، فتعمل أي طابعة ESC/POS. قد يطلب macOS كلمة مرور المدير."
    }
}
