pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Three ways to a printer: on the network, at a USB port, over Bluetooth.
Sheet {
    id: root

    // Handed over once and never bound to what is open just now: it stays until nothing of the sheet looks at it.
    required property PrinterFinder finder

    icon: "plus.circle.fill"
    implicitHeight: Theme.px(640) // whatever a tab holds, so that the tabs stay where they are
    subtitle: "واي فاي / شبكة، USB، أو بلوتوث"
    title: "إضافة طابعة"

    onClosed: MainView.adding = false
    onOpened: tabs.forceActiveFocus(Qt.TabFocusReason)

    Tabs {
        id: tabs
        Accessible.name: "طريقة التوصيل"
        Layout.fillWidth: true
        options: root.finder.tabs
        value: root.finder.__tab

        onChosen: value => root.finder.__tab = value
    }
    AddPrinterNetwork {
        Layout.fillWidth: true
        finder: root.finder
        visible: root.finder.__tab === "net"
    }
    AddPrinterUsb {
        Layout.fillWidth: true
        finder: root.finder
        visible: root.finder.__tab === "usb"
    }
    AddPrinterBluetooth {
        Layout.fillWidth: true
        visible: root.finder.__tab === "bluetooth"
    }
}
