import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

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

            TabChoice {
                required property var modelData

                current: modelData.value === root.value
                focus: current
                symbol: modelData.icon ?? ""
                text: modelData.label

                onClicked: root.chosen(modelData.value)
            }
        }
    }
}
