import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// A titled panel; what stands inside it is laid out from top to bottom. Without a title it is a plain panel.
Rectangle {
    id: root

    property string title
    property string icon
    default property alias content: column.data
    property alias trailing: corner.data
    property alias spacing: column.spacing

    Accessible.name: title
    Accessible.role: Accessible.Grouping
    border.color: Theme.gBorder
    border.width: Theme.stroke
    color: Theme.gCard
    implicitHeight: frame.implicitHeight + 2 * Theme.s20
    implicitWidth: frame.implicitWidth + 2 * Theme.s20
    radius: Theme.radiusCard

    ColumnLayout {
        id: frame
        anchors.fill: parent
        anchors.margins: Theme.s20
        spacing: Theme.s16

        RowLayout {
            spacing: Theme.s8
            visible: root.title !== ""

            Icon {
                color: Theme.gPrimary
                name: root.icon
                visible: root.icon !== ""
            }
            LineText {
                Layout.fillWidth: true
                Accessible.name: root.title
                Accessible.role: Accessible.Heading
                font.pixelSize: Theme.textHeadline
                value: "\u200f" + root.title // also where it begins with a Latin word
                weight: Font.Bold
            }
            RowLayout {
                id: corner
                spacing: Theme.s8
            }
        }
        ColumnLayout {
            id: column
            Layout.fillHeight: true
            Layout.fillWidth: true
            spacing: Theme.s12
        }
    }
}
