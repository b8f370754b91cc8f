import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// A labelled row of a form: the label with its hint under it, the control at the other end. The control carries the
// label as its own name too.
RowLayout {
    id: root

    property string label
    property string hint
    default property alias content: slot.data
    property bool wide: false

    spacing: Theme.s16

    ColumnLayout {
        Layout.fillWidth: true
        Layout.preferredWidth: 1
        spacing: Theme.s4

        AppText {
            Layout.fillWidth: true
            Accessible.ignored: true // the control is called so
            text: root.label
            weight: Font.Medium
            wrapMode: Text.Wrap
        }
        AppText {
            Layout.fillWidth: true
            color: Theme.gMuted
            font.pixelSize: Theme.textSmall
            text: root.hint
            visible: root.hint !== ""
            wrapMode: Text.Wrap
        }
    }
    RowLayout {
        id: slot
        Layout.fillWidth: root.wide
        Layout.preferredWidth: root.wide ? 1 : -1
        spacing: Theme.s8
    }
}
