import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// What stands in a button: a symbol, or the sign that something is under way, and the words.
Item {
    id: root

    property string symbol
    property string text
    property bool busy: false
    property color ink: Theme.gText
    property font font

    implicitHeight: row.implicitHeight
    implicitWidth: row.implicitWidth

    RowLayout {
        id: row
        anchors.centerIn: parent
        spacing: Theme.s8
        width: Math.min(implicitWidth, root.width)

        Spinner {
            color: root.ink
            size: Theme.iconBody
            visible: root.busy
        }
        Icon {
            color: root.ink
            name: root.symbol
            size: Theme.iconBody
            visible: root.symbol !== "" && !root.busy
        }
        LineText {
            Layout.fillWidth: true
            Accessible.ignored: true
            color: root.ink
            font: root.font
            value: root.text
            visible: root.text !== ""
        }
    }
}
