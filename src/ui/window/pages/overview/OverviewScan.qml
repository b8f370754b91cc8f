pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Zemrak.Kit
import Zemrak.Window

// What the last connection check found out about each printer.
Card {
    id: root

    icon: "stethoscope"
    title: "نتيجة فحص الاتصال"

    RowLayout {
        spacing: Theme.s12
        visible: Ui.session.overview.scanMessage !== ""

        Spinner {
            visible: Agent.scanning
        }
        AppText {
            Layout.fillWidth: true
            color: Theme.gMuted
            text: Ui.session.overview.scanMessage
            wrapMode: Text.Wrap
        }
    }
    ListView {
        id: list
        Layout.fillWidth: true
        Accessible.name: root.title
        Accessible.role: Accessible.List
        activeFocusOnTab: interactive
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        implicitHeight: Math.min(contentHeight, Theme.px(400))
        interactive: contentHeight > height
        model: Ui.session.overview.scanResults
        visible: count > 0

        T.ScrollBar.vertical: AppScrollBar {
        }

        RowOrder {
            view: list
        }
        FocusRing {
            anchors.margins: 0
            parent: list
            shown: list.activeFocus
        }

        delegate: Item {
            id: line

            required property string name
            required property string icon
            required property string iconColor
            required property string reason

            Accessible.description: reason
            Accessible.name: name
            Accessible.role: Accessible.ListItem
            implicitHeight: Math.max(Theme.px(44), texts.implicitHeight + Theme.s16)
            width: ListView.view.width

            RowLayout {
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.rightMargin: Theme.s16
                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.s12

                Icon {
                    color: Theme.named(line.iconColor)
                    name: line.icon
                    size: Theme.px(22)
                }
                ColumnLayout {
                    id: texts
                    spacing: 2

                    LineText {
                        Layout.fillWidth: true
                        value: line.name
                        weight: Font.Medium
                    }
                    AppText {
                        Layout.fillWidth: true
                        color: Theme.gMuted
                        font.pixelSize: Theme.textSmall
                        text: line.reason
                        visible: line.reason !== ""
                        wrapMode: Text.Wrap
                    }
                }
            }
        }
    }
}
