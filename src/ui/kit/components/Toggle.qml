import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// A switch. It shows `on` and nothing else: pressing it only asks, by toggleRequested, for the other value.
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
    implicitHeight: Theme.px(26)
    implicitWidth: Theme.px(46)
    opacity: enabled ? 1 : Theme.disabledOpacity

    Keys.onEnterPressed: root.clicked()
    Keys.onReturnPressed: root.clicked()
    onClicked: toggleRequested(!on)

    background: Rectangle {
        color: root.on ? (root.hovered ? Theme.primaryFillHover : Theme.primaryFill) : root.hovered ? Theme.fieldBorderHover : Theme.track
        radius: height / 2

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }
        FocusRing {
            around: root.height / 2
            shown: root.visualFocus
        }
    }
    contentItem: Item {
        Rectangle {
            readonly property real gap: Theme.px(3)
            readonly property bool atRight: root.on !== root.mirrored

            color: Theme.onFill
            height: root.height - 2 * gap
            radius: height / 2
            width: height
            x: atRight ? root.width - width - gap : gap
            y: gap

            Behavior on x {
                NumberAnimation {
                    duration: Theme.quick
                }
            }
        }
    }

    HoverHandler {
        cursorShape: root.enabled ? Qt.PointingHandCursor : Qt.ArrowCursor
    }
}
