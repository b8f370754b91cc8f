import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// The transient message, over everything else, sheets too. Takes neither keyboard nor clicks from what lies below.
T.Popup {
    id: root

    property string text

    closePolicy: T.Popup.NoAutoClose
    focus: false
    implicitHeight: implicitContentHeight + 2 * Theme.s12
    implicitWidth: implicitContentWidth + 2 * Theme.s20
    modal: false
    parent: T.Overlay.overlay
    visible: text !== ""
    width: parent ? Math.min(implicitWidth, parent.width - 2 * Theme.s32) : implicitWidth
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? parent.height - height - Theme.s32 : 0
    z: 1000

    leftPadding: Theme.s20
    rightPadding: Theme.s20

    background: Rectangle {
        color: Theme.toast
        radius: Theme.radiusControl
    }
    contentItem: AppText {
        Accessible.name: text
        Accessible.role: Accessible.AlertMessage
        color: Theme.toastInk
        horizontalAlignment: Text.AlignHCenter
        text: root.text
        weight: Font.Medium
        wrapMode: Text.Wrap
    }
    enter: Transition {
        NumberAnimation {
            duration: Theme.quick
            from: 0
            property: "opacity"
            to: 1
        }
    }
    exit: Transition {
        NumberAnimation {
            duration: Theme.gentle
            from: 1
            property: "opacity"
            to: 0
        }
    }
}
