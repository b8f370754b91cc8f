import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// Something of the receipt that there is or is not.
FieldRow {
    id: root

    property bool on: false

    signal toggled(bool value)

    Layout.fillWidth: true

    Toggle {
        Accessible.description: root.hint
        on: root.on
        text: root.label

        onToggleRequested: value => root.toggled(value)
    }
}
