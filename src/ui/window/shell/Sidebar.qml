import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The pages, and at the foot whether the service answers. Up and Down move between the entries.
Rectangle {
    id: root

    color: Theme.gCard
    implicitHeight: column.implicitHeight + Theme.s24 + Theme.s20

    Rectangle {
        anchors.bottom: parent.bottom
        anchors.right: parent.right
        anchors.top: parent.top
        color: Theme.gBorder
        width: Theme.stroke
    }
    ColumnLayout {
        id: column
        anchors.bottomMargin: Theme.s20
        anchors.fill: parent
        anchors.leftMargin: Theme.s12
        anchors.rightMargin: Theme.s12
        anchors.topMargin: Theme.s24
        spacing: Theme.s4

        RowLayout {
            Layout.bottomMargin: Theme.s20
            Layout.leftMargin: Theme.s12
            Layout.rightMargin: Theme.s12
            spacing: Theme.s12

            Image {
                Accessible.ignored: true
                source: "qrc:/zemrak/logo-circle.png"
                sourceSize.height: 72
                sourceSize.width: 72
                Layout.preferredHeight: Theme.px(36)
                Layout.preferredWidth: Theme.px(36)
            }
            LineText {
                Layout.fillWidth: true
                font.pixelSize: Theme.textHeadline
                value: "Zemrak Printer"
                weight: Font.Bold
            }
        }
        Repeater {
            id: entries
            model: Pages

            SidebarEntry {
                id: entry
                Layout.fillWidth: true
                count: entry.pageId === "alerts" ? Ui.session.view.alertsBadge : 0
                current: Ui.session.view.page === entry.pageId

                KeyNavigation.down: entries.itemAt(entry.index + 1)
                KeyNavigation.up: entries.itemAt(entry.index - 1)
                onClicked: Ui.session.view.page = entry.pageId
            }
        }
        Item {
            Layout.fillHeight: true
            Layout.minimumHeight: Theme.s12
        }
        Divider {
            Layout.bottomMargin: Theme.s12
        }
        ServiceIndicator {
            Layout.fillWidth: true
            Layout.leftMargin: Theme.s12
            Layout.rightMargin: Theme.s12
        }
    }
}
