import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// A drop-down chooser over (value, label) pairs: { value: ..., label: "..." }. It shows the label of `value`; a choice
// only asks, by chosen, for another value.
T.ComboBox {
    id: root

    property var value
    property var options: []
    property string name
    readonly property bool open: popup.visible
    property bool opening: false

    signal chosen(var value)

    function place(): int {
        return options.findIndex(option => option.value === value);
    }

    Accessible.name: name
    Accessible.role: Accessible.ComboBox
    Accessible.onPressAction: popup.open()

    currentIndex: place()
    displayText: currentIndex >= 0 && currentIndex < options.length ? options[currentIndex].label : ""
    focusPolicy: Qt.StrongFocus
    font.family: Theme.family
    font.pixelSize: Theme.textBody
    hoverEnabled: true
    implicitHeight: Theme.controlHeight
    implicitWidth: Theme.px(220)
    leftPadding: mirrored ? Theme.controlHeight : Theme.s12
    model: options
    opacity: enabled ? 1 : Theme.disabledOpacity
    rightPadding: mirrored ? Theme.s12 : Theme.controlHeight
    textRole: "label"
    valueRole: "value"

    // The release of the key that opens the list would otherwise choose from it.
    Keys.onPressed: event => {
        if ((event.key === Qt.Key_Return || event.key === Qt.Key_Enter) && !open) {
            opening = true;
            event.accepted = true;
            popup.open();
        }
    }
    Keys.onReleased: event => {
        event.accepted = opening;
        opening = false;
    }
    onActivated: index => {
        const wanted = options[index].value;
        currentIndex = Qt.binding(place);
        if (wanted !== value)
            chosen(wanted);
    }

    background: Rectangle {
        border.color: root.open || root.visualFocus ? Theme.gPrimary : root.hovered ? Theme.fieldBorderHover : Theme.fieldBorder
        border.width: root.open || root.visualFocus ? Theme.ring : Theme.stroke
        color: Theme.field
        radius: Theme.radiusControl
    }
    contentItem: LineText {
        font: root.font
        value: root.displayText
    }
    delegate: T.ItemDelegate {
        id: entry

        required property int index
        required property var modelData

        Accessible.name: modelData.label
        Accessible.role: Accessible.ListItem
        Accessible.onPressAction: entry.clicked()

        height: Theme.compactHeight + Theme.s4
        highlighted: root.highlightedIndex === index
        leftPadding: Theme.s12
        rightPadding: Theme.s12
        width: ListView.view ? ListView.view.width : 0

        background: Rectangle {
            color: entry.highlighted ? Theme.selected : "transparent"
            radius: Theme.radiusSmall
        }
        contentItem: LineText {
            font.family: Theme.family
            font.pixelSize: Theme.textBody
            value: entry.modelData.label
            weight: entry.index === root.currentIndex ? Font.Bold : Font.Normal
        }
    }
    indicator: Icon {
        color: Theme.gMuted
        name: "chevron.down"
        size: Theme.iconSmall
        x: root.mirrored ? Theme.s12 : root.width - width - Theme.s12
        y: (root.height - height) / 2
    }
    popup: T.Popup {
        height: Math.min(contentItem.implicitHeight + 2 * padding, Theme.px(300))
        margins: Theme.s8
        padding: Theme.s4
        width: root.width
        y: root.height + Theme.s4

        background: Rectangle {
            border.color: Theme.fieldBorder
            border.width: Theme.stroke
            color: Theme.raised
            radius: Theme.radiusControl
        }
        contentItem: ListView {
            clip: true
            currentIndex: root.highlightedIndex
            implicitHeight: contentHeight
            model: root.delegateModel

            T.ScrollBar.vertical: AppScrollBar {
            }
        }
    }
}
