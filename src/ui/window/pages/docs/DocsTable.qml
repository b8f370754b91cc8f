pragma ComponentBehavior: Bound

import QtQuick
import Zemrak.Kit
import Zemrak.Window

// A table of the guide: a bold header, lines between the rows, and a button that copies it all.
Rectangle {
    id: root

    required property DocsBlock block

    Accessible.name: "جدول"
    Accessible.role: Accessible.Table
    border.color: Theme.gBorder
    border.width: Theme.stroke
    color: Theme.gCard
    implicitHeight: column.implicitHeight + 2 * Theme.stroke
    implicitWidth: Theme.px(480)
    radius: Theme.radiusControl

    Column {
        id: column
        anchors.left: parent.left
        anchors.leftMargin: Theme.s8
        anchors.right: parent.right
        anchors.rightMargin: Theme.s8
        y: Theme.stroke

        Repeater {
            model: root.block.rows

            DocsTableRow {
                required property var modelData
                required property int index

                cells: modelData
                header: index === 0
                monoFirst: root.block.monoFirst
                room: header ? button.width : 0
                shares: root.block.shares
                width: column.width
            }
        }
    }
    IconButton {
        id: button

        property bool copied: false

        anchors.right: parent.right
        anchors.rightMargin: Theme.s4
        ink: copied ? Theme.readable(Theme.gGreen) : Theme.gMuted
        symbol: copied ? "checkmark" : "doc.on.doc"
        text: "نسخ الجدول بصيغة Markdown"
        y: Theme.s4

        onClicked: {
            Clipboard.copy(Ui.session.docs.takeTable(root.block.index));
            copied = true;
            said.restart();
        }

        Timer {
            id: said
            interval: 1600

            onTriggered: button.copied = false
        }
    }
}
