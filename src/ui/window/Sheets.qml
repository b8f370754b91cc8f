import QtQuick
import Zemrak

// The sheets the window can open; each exists only while it is open.
Item {
    Loader {
        active: MainView.editing !== ""

        sourceComponent: ProfileSheet {
            visible: true

            onClosed: MainView.endEditing()
        }
    }
    Loader {
        active: MainView.adding

        sourceComponent: AddPrinterSheet {
            visible: true

            onClosed: MainView.adding = false
        }
    }
    Loader {
        active: MainView.showLog

        sourceComponent: LogSheet {
            visible: true

            onClosed: MainView.showLog = false
        }
    }
}
