import QtQuick
import Zemrak.Kit

// A row of a long list, on a card of its own: a symbol, the texts from top to bottom, and what can be done, which goes
// below the texts where it would crowd them. Of the whole list only the chosen row is a stop of the Tab key, and its
// controls the next ones: they take the focus by `stops`. Up and Down choose another row.
FocusScope {
    id: root

    property int row: -1
    property string name
    property real inset: Theme.s16 // above and below
    property bool leadingOnTop: false
    property var facts: [] // what is told after the name; empty ones are left out
    readonly property bool chosen: ListView.isCurrentItem || activeFocus
    readonly property int stops: chosen ? Qt.StrongFocus : Qt.ClickFocus
    default property alias content: body.data
    property alias leading: lead.data
    property alias trailing: trail.data
    readonly property real room: Math.max(Theme.px(160), width - 2 * Theme.s20) - (lead.width > 0 ? lead.width + Theme.s16 : 0)
    readonly property real roomBeside: room - (trail.implicitWidth > 0 ? trail.implicitWidth + Theme.s16 : 0)
    readonly property bool stacked: roomBeside < Theme.px(200) && trail.implicitWidth > 2 * Theme.controlHeight
    readonly property real textRoom: stacked ? room : roomBeside

    height: implicitHeight
    implicitHeight: Math.max(lead.implicitHeight, body.implicitHeight + (stacked ? Theme.s12 + trail.implicitHeight : 0), stacked ? 0 : trail.implicitHeight) + 2 * inset

    onActiveFocusChanged: if (activeFocus && ListView.view)
        ListView.view.currentIndex = row

    Rectangle {
        id: surface
        Accessible.description: root.facts.filter(fact => fact !== "").join("، ")
        Accessible.focusable: true
        Accessible.name: root.name
        Accessible.role: Accessible.ListItem
        activeFocusOnTab: root.chosen
        anchors.fill: parent
        border.color: Theme.gBorder
        border.width: Theme.stroke
        color: Theme.gCard
        focus: true
        radius: Theme.radiusCard

        FocusRing {
            anchors.margins: 0 // further out, the list would cut it off
            around: surface.radius - 3
            shown: surface.activeFocus
        }
        Row {
            id: lead
            anchors.left: parent.left
            anchors.leftMargin: Theme.s20
            y: root.leadingOnTop || root.stacked ? root.inset : (root.height - height) / 2
        }
        Column {
            id: body
            anchors.left: lead.right
            anchors.leftMargin: lead.width > 0 ? Theme.s16 : 0
            spacing: Theme.s4
            width: root.textRoom
            y: root.stacked ? root.inset : (root.height - height) / 2
        }
        Row {
            id: trail
            anchors.right: parent.right
            anchors.rightMargin: Theme.s20
            spacing: Theme.s8
            width: root.stacked ? root.textRoom : implicitWidth
            y: root.stacked ? body.y + body.height + Theme.s12 : (root.height - height) / 2
        }
    }
}
