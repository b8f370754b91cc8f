import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Zemrak

// One of a few choices, side by side: { value: ..., label: "...", icon: "..." }. Shows `value`; a choice asks for another.
// The arrow keys move the choice, in reading direction.
FocusScope {
    id: root

    property var value
    property var options: []

    signal chosen(var value)

    function step(by: int): void {
        const at = options.findIndex(option => option.value === value) + by;
        if (at >= 0 && at < options.length)
            chosen(options[at].value);
    }

    Accessible.role: Accessible.PageTabList
    implicitHeight: flow.implicitHeight
    implicitWidth: flow.implicitWidth

    Keys.onLeftPressed: step(LayoutMirroring.enabled ? 1 : -1)
    Keys.onRightPressed: step(LayoutMirroring.enabled ? -1 : 1)

    Flow {
        id: flow
        anchors.left: parent.left
        anchors.right: parent.right
        spacing: Theme.s8

        Repeater {
            model: root.options

            BaseButton {
                required property var modelData
                readonly property bool current: modelData.value === root.value

                Accessible.role: Accessible.PageTab
                Accessible.selected: current
                edge: current ? "transparent" : Theme.gBorder
                focus: current
                focusPolicy: current ? Qt.StrongFocus : Qt.ClickFocus
                ground: current ? Theme.selected : down ? Theme.pressed : hovered ? Theme.hover : Theme.gCard
                implicitHeight: Theme.px(36)
                ink: current ? Theme.readable(Theme.gPrimary) : Theme.gText
                symbol: modelData.icon ?? ""
                text: modelData.label

                onClicked: root.chosen(modelData.value)
            }
        }
    }
}
