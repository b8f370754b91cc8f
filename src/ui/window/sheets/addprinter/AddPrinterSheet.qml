pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Three ways to a printer: on the network, at a USB port, over Bluetooth.
Sheet {
    id: root

    // Set once, not bound to the session: it must stay until the sheet has closed (the session uses deleteLater).
    required property AddPrinterPresenter presenter

    icon: "plus.circle.fill"
    implicitHeight: Theme.px(640) // whatever a tab holds, so that the tabs stay where they are
    subtitle: "واي فاي / شبكة، USB، أو بلوتوث"
    title: "إضافة طابعة"

    onClosed: Ui.session.view.adding = false
    onOpened: tabs.forceActiveFocus(Qt.TabFocusReason)

    Tabs {
        id: tabs
        Accessible.name: "طريقة التوصيل"
        Layout.fillWidth: true
        options: root.presenter.tabs
        value: root.presenter.__tab

        onChosen: value => root.presenter.__tab = value
    }
    AddPrinterNetwork {
        Layout.fillWidth: true
        presenter: root.presenter
        visible: root.presenter.__tab === "net"
    }
    AddPrinterUsb {
        Layout.fillWidth: true
        presenter: root.presenter
        visible: root.presenter.__tab === "usb"
    }
    AddPrinterBluetooth {
        Layout.fillWidth: true
        visible: root.presenter.__tab === "bluetooth"
    }
}
