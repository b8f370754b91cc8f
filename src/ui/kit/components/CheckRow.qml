import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Zemrak.Kit

// A box to tick, with its words. Shows `on`; pressing asks for the other value.
T.CheckBox {
    id: root

    property bool on: false

    signal toggleRequested(bool value)

    // Role and state for assistive technology are those of the template: it writes over what is said here of them.
    checked: on
    nextCheckState: () => checkState // a press does not tick it

    Accessible.name: text
    Accessible.onPressAction: if (root.enabled) root.clicked()
    Accessible.onToggleAction: if (root.enabled) root.clicked()

    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    implicitHeight: Math.max(Theme.compactHeight, implicitContentHeight)
    implicitWidth: implicitContentWidth
    opacity: enabled ? 1 : Theme.disabledOpacity

    onClicked: toggleRequested(!on)

    contentItem: RowLayout {
        spacing: Theme.s8

        Rectangle {
            border.color: root.on ? Theme.primaryFill : root.hovered ? Theme.fieldBorderHover : Theme.fieldBorder
            border.width: Theme.stroke
            color: root.on ? Theme.primaryFill : Theme.field
            implicitHeight: Theme.px(20)
            implicitWidth: Theme.px(20)
            radius: Theme.radiusSmall

            Icon {
                anchors.centerIn: parent
                color: Theme.onFill
                name: "checkmark"
                size: Theme.px(14)
                visible: root.on
            }
            FocusRing {
                around: Theme.radiusSmall
                shown: root.visualFocus
            }
        }
        AppText {
            Layout.fillWidth: true
            Accessible.ignored: true
            lineHeight: 1
            text: root.text
            wrapMode: Text.Wrap
        }
    }
}
