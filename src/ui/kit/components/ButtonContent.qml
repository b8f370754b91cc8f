import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// The content of a button: a symbol, or a spinner while busy, and the text.
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
