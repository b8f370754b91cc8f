import QtQuick
import Zemrak.Kit

// Narrows a list. Escape empties it before it does anything else.
Input {
    id: root

    readonly property bool mirrored: LayoutMirroring.enabled

    leftPadding: mirrored ? (clear.visible ? Theme.controlHeight : Theme.s12) : Theme.controlHeight
    rightPadding: mirrored ? Theme.controlHeight : (clear.visible ? Theme.controlHeight : Theme.s12)

    Keys.onEscapePressed: event => {
        event.accepted = length > 0;
        text = "";
    }

    Icon {
        anchors.left: parent.left
        anchors.leftMargin: Theme.s12
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.gMuted
        name: "magnifyingglass"
        size: Theme.iconBody
    }
    IconButton {
        id: clear
        anchors.right: parent.right
        anchors.rightMargin: Theme.s4
        anchors.verticalCenter: parent.verticalCenter
        symbol: "xmark.circle.fill"
        text: "مسح البحث"
        visible: root.length > 0

        onClicked: {
            root.text = "";
            root.forceActiveFocus();
        }
    }
}
