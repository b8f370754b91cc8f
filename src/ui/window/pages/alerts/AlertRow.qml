import QtQuick
import Zemrak.Kit
import Zemrak.Window

// One alert, with what can be done about it. A new one carries a dot beside its title until it is read.
RowCard {
    id: root

    required property int index
    required property string title
    required property string message
    required property string icon
    required property string iconColor
    required property bool resolved
    required property bool unread
    required property string countBadge
    required property string time
    required property string action
    required property string actionTitle
    readonly property color shade: Theme.named(iconColor)

    facts: [unread ? "غير مقروء" : "", resolved ? "تم الحل" : "", countBadge, time]
    leadingOnTop: true
    name: title + ". " + message
    row: index

    leading: Rectangle {
        color: Theme.dark ? Theme.tint(root.shade, 0.14) : Theme.glyphGround
        height: Theme.tile
        radius: height / 2
        width: Theme.tile

        Icon {
            anchors.centerIn: parent
            color: root.shade
            name: root.icon
        }
    }
    trailing: SecondaryButton {
        Accessible.description: root.title
        focusPolicy: root.stops
        text: root.actionTitle
        visible: root.action !== ""

        onClicked: Ui.session.alerts.press(root.action)
    }

    Row {
        spacing: Theme.s8

        Dot {
            id: dot
            color: Theme.gPrimary
            visible: root.unread
            y: (heading.cursorRectangle.height - height) / 2
        }
        SelectableText {
            id: heading
            activeFocusOnTab: root.chosen
            font.weight: root.unread ? Font.Bold : Font.Medium
            value: root.title
            width: root.textRoom - (dot.visible ? dot.width + Theme.s8 : 0)
        }
    }
    SelectableText {
        activeFocusOnTab: root.chosen
        color: Theme.gMuted
        value: root.message
        width: root.textRoom
    }
    Flow {
        readonly property bool badged: root.resolved || root.countBadge !== ""

        spacing: Theme.s8
        topPadding: badged ? Theme.s4 : 0
        width: root.textRoom

        Badge {
            id: over
            Accessible.ignored: true
            color: Theme.gGreen
            text: "تم الحل"
            visible: root.resolved
        }
        Badge {
            Accessible.ignored: true
            color: Theme.gMuted
            text: root.countBadge
            visible: root.countBadge !== ""
        }
        AppText {
            Accessible.ignored: true
            color: Theme.gMuted
            font.pixelSize: Theme.textSmall
            height: parent.badged ? Math.max(implicitHeight, over.implicitHeight) : implicitHeight
            text: root.time
        }
    }
}
