import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// A labelled row with a line to type in. Shows `text`; what is typed is told by edited.
FieldRow {
    id: root

    property string text
    property string placeholder
    readonly property Item control: input

    signal edited(string text)
    signal accepted()

    Layout.fillWidth: true
    wide: true

    Input {
        id: input
        Layout.fillWidth: true
        name: root.label
        placeholder: root.placeholder
        text: root.text

        onAccepted: root.accepted()
        onTextEdited: root.edited(text)
    }
}
