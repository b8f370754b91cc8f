import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// A single line to type in. Its direction is that of the first letter, before there is one that of the keyboard.
T.TextField {
    id: root

    property alias placeholder: root.placeholderText
    property bool faulty: false
    property string name: placeholder
    property string symbol

    Accessible.name: name
    Accessible.role: Accessible.EditableText

    activeFocusOnTab: true
    color: Theme.gText
    font.family: Theme.family
    font.pixelSize: Theme.textBody
    // Set for both directions: a text that was assigned before the field was in a window is laid out only then.
    horizontalAlignment: LayoutMirroring.enabled ? Text.AlignLeft : Text.AlignRight
    hoverEnabled: true
    implicitHeight: Math.max(Theme.controlHeight, contentHeight + topPadding + bottomPadding)
    implicitWidth: Theme.px(220)
    leftPadding: Theme.s12
    opacity: enabled ? 1 : Theme.disabledOpacity
    placeholderTextColor: Theme.gMuted
    rightPadding: Theme.s12
    selectByMouse: true
    selectedTextColor: Theme.onFill
    selectionColor: Theme.primaryFill
    verticalAlignment: Text.AlignVCenter

    background: Rectangle {
        border.color: root.faulty ? Theme.gRed : root.activeFocus ? Theme.gPrimary : root.hovered ? Theme.fieldBorderHover : Theme.fieldBorder
        border.width: root.activeFocus || root.faulty ? Theme.ring : Theme.stroke
        color: Theme.field
        radius: Theme.radiusControl
    }

    AppText {
        Accessible.ignored: true
        color: Theme.gMuted
        elide: Text.ElideRight
        height: root.height
        lineHeight: 1
        text: root.placeholder
        visible: root.length === 0 && root.preeditText === ""
        width: root.width - root.leftPadding - root.rightPadding
        x: root.leftPadding
    }
}
