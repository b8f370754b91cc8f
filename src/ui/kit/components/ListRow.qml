import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// A row of a list or of settings: symbol, title over subtitle, and what stands at the other end.
Item {
    id: root

    property string icon
    property var colors: []
    property string title
    property string subtitle
    property color subtitleColor: Theme.gMuted
    property bool ltrTitle: false
    default property alias trailing: end.data

    Accessible.name: title
    Accessible.role: Accessible.ListItem
    implicitHeight: Math.max(Theme.rowHeight, row.implicitHeight + 2 * Theme.s12)
    implicitWidth: row.implicitWidth

    RowLayout {
        id: row
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.s16

        GradientIcon {
            Layout.alignment: Qt.AlignVCenter
            colors: root.colors
            name: root.icon
            visible: root.icon !== ""
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            LineText {
                Layout.fillWidth: true
                value: root.ltrTitle ? "\u2066" + root.title + "\u2069" : root.title
                weight: Font.Medium
            }
            AppText {
                Layout.fillWidth: true
                color: root.subtitleColor
                font.pixelSize: Theme.textSmall
                text: root.subtitle
                visible: root.subtitle !== ""
                wrapMode: Text.Wrap
            }
        }
        RowLayout {
            id: end
            Layout.alignment: Qt.AlignVCenter
            spacing: Theme.s8
        }
    }
}
