import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// One setting on its own panel: tile, title over what is known of it, and its control at the other end; below the words
// where there is no room beside them.
Rectangle {
    id: root

    property string icon
    property var colors: []
    property string title
    property string status
    property color statusColor: Theme.gMuted
    default property alias control: slot.data
    property alias more: below.data // under the words, over the whole width

    readonly property bool narrow: slot.implicitWidth > width * 0.3

    Accessible.description: status
    Accessible.name: title
    Accessible.role: Accessible.Grouping
    Layout.fillWidth: true
    border.color: Theme.gBorder
    border.width: Theme.stroke
    color: Theme.gCard
    implicitHeight: grid.implicitHeight + 2 * Theme.s16
    radius: Theme.radiusCard

    GridLayout {
        id: grid
        anchors.left: parent.left
        anchors.leftMargin: Theme.s20
        anchors.right: parent.right
        anchors.rightMargin: Theme.s20
        anchors.verticalCenter: parent.verticalCenter
        columnSpacing: Theme.s16
        columns: root.narrow ? 2 : 3
        rowSpacing: Theme.s12

        GradientIcon {
            Layout.alignment: Qt.AlignVCenter
            colors: root.colors
            name: root.icon
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            AppText {
                Layout.fillWidth: true
                Accessible.ignored: true // the panel and the control are called so
                lineHeight: 1
                text: root.title
                weight: Font.Medium
                wrapMode: Text.Wrap
            }
            AppText {
                Layout.fillWidth: true
                color: root.statusColor
                font.pixelSize: Theme.textSmall
                text: root.status
                visible: root.status !== ""
                wrapMode: Text.Wrap
            }
        }
        RowLayout {
            id: slot
            Layout.column: root.narrow ? 1 : 2
            Layout.row: root.narrow ? 1 : 0
            spacing: Theme.s8
        }
        ColumnLayout {
            id: below
            Layout.column: 1
            Layout.columnSpan: root.narrow ? 1 : 2
            Layout.row: root.narrow ? 2 : 1
            spacing: Theme.s12
            visible: children.length > 0
        }
    }
}
