import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

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
        // Never cut short, and of one width however far it counts.
        AppText {
            id: count
            Layout.preferredWidth: Math.ceil(longest.advanceWidth)
            Accessible.name: root.counter
            color: root.problem === "" ? Theme.gMuted : Theme.readable(Theme.gAmber)
            font.pixelSize: Theme.textSmall
            horizontalAlignment: Text.AlignRight
            text: "\u2066" + root.counter + "\u2069"
            visible: root.counter !== ""
        }
        TextMetrics {
            id: longest
            font: count.font
            text: "0000 / 000"
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
