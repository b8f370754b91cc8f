import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// A choice of the receipt. Shows `value`; a choice asks for another.
DesignerField {
    id: root

    property var value
    property var options: []

    signal chosen(var value)

    Select {
        Layout.fillWidth: true
        name: root.label
        options: root.options
        value: root.value

        onChosen: value => root.chosen(value)
    }
}
