import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// A labelled row with a drop-down chooser. Shows `value`; a choice asks for another.
FieldRow {
    id: root

    property var value
    property var options: []
    readonly property Item control: select

    signal chosen(var value)

    Layout.fillWidth: true
    wide: true

    Select {
        id: select
        Layout.fillWidth: true
        name: root.label
        options: root.options
        value: root.value

        onChosen: value => root.chosen(value)
    }
}
