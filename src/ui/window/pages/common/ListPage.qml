import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Zemrak.Kit
import Zemrak.Window

// The scaffold of a page that is one long list: its head stays, its rows scroll, and only those in sight exist.
FocusScope {
    id: root

    property string page
    property string subtitle
    property alias actions: header.actions
    property alias above: top.data // between head and list, such as a search field
    property alias model: list.model
    property alias delegate: list.delegate
    property alias list: list
    property bool listStays: false // also while it is empty, for a header or footer of its own
    property alias placeholder: placeholder.data // in place of the list while it is empty

    ColumnLayout {
        anchors.fill: parent
        anchors.leftMargin: Theme.pageMargin(root.width)
        anchors.rightMargin: Theme.pageMargin(root.width)
        anchors.topMargin: Theme.s32
        spacing: 0

        PageHeader {
            id: header
            Layout.bottomMargin: Theme.s24
            Layout.fillWidth: true
            page: root.page
            subtitle: root.subtitle
        }
        ColumnLayout {
            id: top
            Layout.bottomMargin: implicitHeight > 0 ? Theme.s16 : 0 // what stands there may all be hidden
            Layout.fillHeight: false
            spacing: Theme.s12
        }
        Item {
            id: placeholder
            Layout.fillHeight: true
            Layout.fillWidth: true
            visible: list.count === 0 && !root.listStays
        }
        // Rows that have gone are not kept for another use: assistive technology would still find and press them.
        ListView {
            id: list
            Layout.fillHeight: true
            Layout.fillWidth: true
            Accessible.role: Accessible.List
            Accessible.name: Pages.title(root.page)
            bottomMargin: Theme.s32
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            interactive: contentHeight > height
            spacing: Theme.s12
            visible: count > 0 || root.listStays

            // At the page's edge, where it covers no row.
            T.ScrollBar.vertical: AppScrollBar {
                anchors.right: parent.right
                height: list.height
                parent: root
                y: root.height - height
            }
        }
    }
    FocusScroller {
        view: list
    }
    RowOrder {
        view: list
    }
}
