import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// Where the wizard's pages stand; the next one comes in from where reading goes on.
T.StackView {
    id: root

    readonly property real way: (LayoutMirroring.enabled ? -1 : 1) * Theme.s40

    replaceEnter: Transition {
        NumberAnimation {
            duration: Theme.advance
            easing.type: Easing.InOutQuad
            from: 0
            property: "opacity"
            to: 1
        }
        NumberAnimation {
            duration: Theme.advance
            easing.type: Easing.InOutQuad
            from: root.way
            property: "x"
            to: 0
        }
    }
    replaceExit: Transition {
        NumberAnimation {
            duration: Theme.advance
            easing.type: Easing.InOutQuad
            from: 1
            property: "opacity"
            to: 0
        }
        NumberAnimation {
            duration: Theme.advance
            easing.type: Easing.InOutQuad
            from: 0
            property: "x"
            to: -root.way
        }
    }
}
