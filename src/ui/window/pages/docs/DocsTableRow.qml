pragma ComponentBehavior: Bound

import QtQuick
import Zemrak.Kit

// A row of a table, its cells beside each other in the reading direction; `room` is kept free at its end.
Item {
    id: root

    property var cells: []
    property var shares: []
    property bool header: false
    property bool monoFirst: false
    property real room: 0

    Accessible.name: cells.join(" — ")
    Accessible.role: Accessible.Row
    implicitHeight: row.implicitHeight + 2 * Theme.s12

    Row {
        id: row
        anchors.left: parent.left
        anchors.right: parent.right
        y: Theme.s12

        Repeater {
            model: root.cells

            // Plain, as there may be a hundred of them on a page.
            TextEdit {
                required property string modelData
                required property int index
                readonly property bool mono: root.monoFirst && index === 0 && !root.header

                Accessible.name: modelData
                Accessible.readOnly: true
                Accessible.role: Accessible.Cell
                activeFocusOnTab: false
                color: Theme.gText
                font.family: mono ? Theme.monospace : Theme.family
                font.pixelSize: mono || root.header ? Theme.textSmall : Theme.textBody
                font.weight: root.header ? Font.Bold : Font.Normal
                horizontalAlignment: TextEdit.AlignLeft
                leftPadding: Theme.s8
                readOnly: true
                rightPadding: Theme.s8
                topPadding: mono ? Theme.px(3) : 0 // on one line with the other typeface
                selectByMouse: true
                selectedTextColor: Theme.onFill
                selectionColor: Theme.primaryFill
                text: modelData
                textFormat: TextEdit.PlainText
                width: root.width * root.shares[index] - (index === root.cells.length - 1 ? root.room : 0)
                wrapMode: TextEdit.Wrap

                Keys.onPressed: event => {
                    if (event.matches(StandardKey.Copy) && selectedText !== "") {
                        Clipboard.copy(selectedText);
                        event.accepted = true;
                    }
                }
                onActiveFocusChanged: if (!activeFocus)
                    deselect()
            }
        }
    }
    Divider {
        anchors.left: parent.left
        anchors.right: parent.right
        visible: !root.header
    }
}
