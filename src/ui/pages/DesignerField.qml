import QtQuick
import QtQuick.Layouts
import Zemrak

// A field of the receipt's form: its label, what it is for and how full it is, the control, and under that what a person
// should know before printing.
ColumnLayout {
    id: root

    property string label
    property string hint
    property string counter
    property string problem
    default property alias content: slot.data
    readonly property string description: problem === "" ? hint : hint === "" ? problem : hint + "، " + problem

    Layout.alignment: Qt.AlignTop
    Layout.fillHeight: false
    Layout.fillWidth: true
    spacing: Theme.s4

    AppText {
        Layout.fillWidth: true
        Accessible.ignored: true // the control is called so
        text: root.label
        weight: Font.Medium
        wrapMode: Text.Wrap
    }
    RowLayout {
        spacing: Theme.s12
        visible: root.hint !== ""

        AppText {
            Layout.fillWidth: true
            color: Theme.gMuted
            font.pixelSize: Theme.textSmall
            text: root.hint
            wrapMode: Text.Wrap
        }
        LtrText {
            Layout.minimumWidth: Math.ceil(implicitWidth)
            color: root.problem === "" ? Theme.gMuted : Theme.readable(Theme.gAmber)
            code: root.counter
            font.pixelSize: Theme.textSmall
            visible: root.counter !== ""
        }
    }
    RowLayout {
        id: slot
    }
    RowLayout {
        spacing: Theme.s8
        visible: root.problem !== ""

        Icon {
            Layout.alignment: Qt.AlignTop
            color: Theme.gAmber
            name: "exclamationmark.triangle.fill"
            size: Theme.iconSmall
        }
        AppText {
            Layout.fillWidth: true
            color: Theme.readable(Theme.gAmber)
            font.pixelSize: Theme.textSmall
            text: root.problem
            wrapMode: Text.Wrap
        }
    }
}
