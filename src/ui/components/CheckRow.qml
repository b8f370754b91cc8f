import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Zemrak

// A box to tick, with its words. Shows `on`; pressing asks for the other value.
T.AbstractButton {
    id: root

    property bool on: false

    signal toggleRequested(bool value)

    Accessible.checkable: true
    Accessible.checked: on
    Accessible.name: text
    Accessible.role: Accessible.CheckBox
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
