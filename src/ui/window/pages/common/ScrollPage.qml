import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Zemrak.Kit
import Zemrak.Window

// The scaffold of a page whose content is laid out from top to bottom and scrolls as a whole, its head with it.
FocusScope {
    id: root

    property string page
    property string subtitle
    property alias actions: header.actions
    property alias header: header
    property alias contentY: view.contentY
    property alias view: view
    default property alias content: column.data

    Flickable {
        id: view
        anchors.fill: parent
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        contentHeight: column.implicitHeight + 2 * Theme.s32
        interactive: contentHeight > height

        T.ScrollBar.vertical: AppScrollBar {
        }

        ColumnLayout {
            id: column
            spacing: Theme.s20
            width: view.width - 2 * x
            x: Theme.pageMargin(view.width)
            y: Theme.s32

            PageHeader {
                id: header
                Layout.bottomMargin: Theme.s8
                Layout.fillWidth: true
                page: root.page
                subtitle: root.subtitle
                visible: root.page !== ""
            }
        }
    }
    FocusScroller {
        view: view
    }
}
