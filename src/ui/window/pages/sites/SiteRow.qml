import QtQuick
import Zemrak.Kit
import Zemrak.Window

// One origin that may print, and what can be taken from it.
RowCard {
    id: root

    required property int index
    required property string origin
    required property string tag
    required property bool removable
    required property bool paired
    required property string siteId
    required property string siteName
    required property string statusText
    required property string statusColor

    signal removeRequested()

    facts: [statusText, siteName, root.tag]
    name: origin
    row: index

    leading: GradientIcon {
        colors: [Theme.hex6("4ade80"), Theme.hex6("16a34a")]
        name: "globe"
    }
    trailing: [
        SecondaryButton {
            Accessible.description: root.origin
            focusPolicy: root.stops
            text: "إلغاء الاقتران"
            visible: root.paired

            onClicked: Ui.session.sites.revoke(root.siteId)
        },
        IconButton {
            Accessible.description: root.origin
            focusPolicy: root.stops
            implicitHeight: Theme.controlHeight
            implicitWidth: Theme.controlHeight
            symbol: "trash"
            text: "حذف الموقع"
            visible: root.removable

            onClicked: root.removeRequested()
        }
    ]

    SelectableText {
        activeFocusOnTab: root.chosen
        font.weight: Font.Medium
        ltr: true
        value: root.origin
        width: root.textRoom
    }
    Flow {
        spacing: Theme.s8
        width: root.textRoom

        AppText {
            Accessible.ignored: true
            color: Theme.readable(Theme.named(root.statusColor))
            font.pixelSize: Theme.textSmall
            height: Math.max(implicitHeight, badge.implicitHeight)
            text: root.statusText
        }
        LineText {
            Accessible.ignored: true
            color: Theme.gMuted
            font.pixelSize: Theme.textSmall
            height: Math.max(implicitHeight, badge.implicitHeight)
            value: "\u200f· \u2068" + root.siteName + "\u2069"
            visible: root.siteName !== ""
            width: Math.min(implicitWidth, parent.width)
        }
        Badge {
            id: badge
            Accessible.ignored: true
            color: Theme.hex6("c084fc")
            text: root.tag
            visible: root.tag !== ""
        }
    }
}
