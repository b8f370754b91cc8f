import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// A labelled row with a line to type in, and under it what is wrong with that. Shows `text`; what is typed is told by
// edited.
ColumnLayout {
    id: root

    property alias label: row.label
    property alias hint: row.hint
    property string text
    property string placeholder
    property string problem
    readonly property Item control: input

    signal edited(string text)
    signal accepted()

    Layout.fillWidth: true
    spacing: Theme.s8

    FieldRow {
        id: row
        Layout.fillWidth: true
        wide: true

        Input {
            id: input
            Accessible.description: root.problem
            Layout.fillWidth: true
            faulty: root.problem !== ""
            name: root.label
            placeholder: root.placeholder
            text: root.text

            onAccepted: root.accepted()
            // Also what assistive technology puts there, which is not edited by the field's own account.
            onTextChanged: if (text !== root.text)
                root.edited(text)
        }
    }
    FieldProblem {
        text: root.problem
    }
}
