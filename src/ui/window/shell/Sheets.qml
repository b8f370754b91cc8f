import QtQuick
import Zemrak.Window

// The sheets the window can open; each exists only while it is open. A sheet gets its presenter when it is made and
// keeps it while it closes, when the session may already have another.
Item {
    Loader {
        readonly property ProfilePresenter presenter: Ui.session.profile

        onPresenterChanged: {
            source = "";
            if (presenter)
                setSource("../sheets/profile/ProfileSheet.qml", { "presenter": presenter, "visible": true });
        }
    }
    Loader {
        readonly property AddPrinterPresenter presenter: Ui.session.addPrinter

        onPresenterChanged: {
            source = "";
            if (presenter)
                setSource("../sheets/addprinter/AddPrinterSheet.qml", { "presenter": presenter, "visible": true });
        }
    }
    Loader {
        active: Ui.session.view.showLog

        sourceComponent: LogSheet {
            visible: true

            onClosed: Ui.session.view.showLog = false
        }
    }
}
