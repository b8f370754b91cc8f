import QtQuick
import Zemrak.Window

// The sheets the window can open; each exists only while it is open. What stands behind one is handed to it when it is
// made, since it may go while the sheet is still on its way out.
Item {
    Loader {
        readonly property ProfileEditor editor: Presenters.editor

        onEditorChanged: {
            source = "";
            if (editor)
                setSource("../sheets/profile/ProfileSheet.qml", { "editor": editor, "visible": true });
        }
    }
    Loader {
        readonly property PrinterFinder finder: Presenters.finder

        onFinderChanged: {
            source = "";
            if (finder)
                setSource("../sheets/addprinter/AddPrinterSheet.qml", { "finder": finder, "visible": true });
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
