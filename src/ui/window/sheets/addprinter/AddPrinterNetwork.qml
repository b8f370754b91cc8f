import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Searches on the network, and an address typed by hand.
ColumnLayout {
    id: root

    required property AddPrinterPresenter presenter

    spacing: Theme.s16

    Card {
        Layout.fillWidth: true
        icon: "dot.radiowaves.left.and.right"
        title: "بحث تلقائي"

        Flow {
            Layout.fillWidth: true
            spacing: Theme.s8

            PrimaryButton {
                busy: !root.presenter.canSearchNetwork
                symbol: "magnifyingglass"
                text: "ابحث عن طابعات في الشبكة"

                onClicked: root.presenter.searchNetwork()
            }
            SecondaryButton {
                busy: !root.presenter.canSearchBonjour
                text: "بحث Bonjour (واي فاي / AirPrint)"

                onClicked: root.presenter.searchBonjour()
            }
        }
        AddPrinterHits {
            hits: root.presenter.__hosts
            ltrTitles: true

            onAdd: row => root.presenter.addHost(row)
        }
        AddPrinterHits {
            hits: root.presenter.__bonjour
            ltrDetails: true

            onAdd: row => root.presenter.addBonjour(row)
        }
        AddPrinterProgress {
            hint: root.presenter.networkHint
            outcome: root.presenter.networkOutcome
            scanning: root.presenter.__scanning
        }
    }
    AddPrinterManual {
        presenter: root.presenter
    }
}
