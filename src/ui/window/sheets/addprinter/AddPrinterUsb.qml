import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Printers at the USB ports.
Card {
    id: root

    required property PrinterFinder finder

    icon: "cable.connector"
    title: "طابعات USB"

    PrimaryButton {
        Layout.alignment: Qt.AlignLeft
        busy: !root.finder.canSearchUsb
        symbol: "magnifyingglass"
        text: "ابحث عن طابعات USB"

        onClicked: root.finder.searchUsb()
    }
    AddPrinterHits {
        hits: root.finder.__usb

        onAdd: row => root.finder.addUsb(row)
    }
    AddPrinterProgress {
        hint: root.finder.usbHint
        outcome: root.finder.usbOutcome
        scanning: root.finder.__scanning
    }
    Note {
        Layout.fillWidth: true
        icon: "info.circle"
        text: "ينشئ طابور CUPS خام بدون تعريف، فتعمل أي طابعة ESC/POS. قد يطلب macOS كلمة مرور المدير."
    }
}
