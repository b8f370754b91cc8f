import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Searches on the network, and an address typed by hand.
ColumnLayout {
    id: root

    required property PrinterFinder finder

    spacing: Theme.s16

    Card {
        Layout.fillWidth: true
        icon: "dot.radiowaves.left.and.right"
        title: "بحث تلقائي"

        Flow {
            Layout.fillWidth: true
            spacing: Theme.s8

            PrimaryButton {
                busy: !root.finder.canSearchNetwork
                symbol: "magnifyingglass"
                text: "ابحث عن طابعات في الشبكة"

                onClicked: root.finder.searchNetwork()
            }
            SecondaryButton {
                busy: !root.finder.canSearchBonjour
                text: "بحث Bonjour (واي فاي / AirPrint)"

                onClicked: root.finder.searchBonjour()
            }
        }
        AddPrinterHits {
            hits: root.finder.__hosts
            ltrTitles: true

            onAdd: row => root.finder.addHost(row)
        }
        AddPrinterHits {
            hits: root.finder.__bonjour
            ltrDetails: true

            onAdd: row => root.finder.addBonjour(row)
        }
        AddPrinterProgress {
            hint: root.finder.networkHint
            outcome: root.finder.networkOutcome
            scanning: root.finder.__scanning
        }
    }
    AddPrinterManual {
        finder: root.finder
    }
}
