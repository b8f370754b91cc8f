import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// The transient message, over everything else, sheets too. It stands at the upper edge: what it tells about, a field, a
// bar with buttons or the foot of a sheet, is further down. Takes neither keyboard nor clicks from what lies below.
T.Popup {
    id: root

    property string text
    property string kept // what it still tells while it goes

    closePolicy: T.Popup.NoAutoClose
    focus: false
    implicitHeight: implicitContentHeight + 2 * Theme.s12
    implicitWidth: implicitContentWidth + 2 * Theme.s20
    modal: false
    parent: T.Overlay.overlay
    visible: text !== ""
    width: parent ? Math.min(implicitWidth, parent.width - 2 * Theme.s32) : implicitWidth
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: Theme.s12
    z: 1000

    onTextChanged: if (text !== "")
        kept = text

    leftPadding: Theme.s20
    rightPadding: Theme.s20

    background: Rectangle {
        border.color: Theme.tint(Theme.toastInk, 0.3)
        border.width: Theme.stroke
        color: Theme.toast
        radius: Theme.radiusControl
    }
    contentItem: AppText {
        Accessible.name: text
        Accessible.role: Accessible.AlertMessage
        color: Theme.toastInk
        horizontalAlignment: Text.AlignHCenter
        text: root.kept
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
