import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// A text of the receipt. Shows `text`; what is typed is told by edited.
DesignerField {
    id: root

    property string text
    property string told // of what is typed, before printing

    signal edited(string text)

    problem: input.length >= input.maximumLength ? DesignerPresenter.fullFieldText : told

    Input {
        id: input
        Layout.fillWidth: true
        Accessible.description: root.description
        maximumLength: DesignerPresenter.longestText
        name: root.label
        placeholder: ""
        text: root.text

        onTextEdited: root.edited(text)
    }
}
