import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// Shown in place of an empty list: what is missing, and what will appear or can be done.
Item {
    id: root

    property string icon
    property string title
    property string text
    property color color: Theme.gPrimary
    default property alias actions: row.data

    Accessible.name: title === "" ? text : title + ". " + text
    Accessible.role: Accessible.StaticText
    implicitHeight: column.implicitHeight + 2 * Theme.s40
    implicitWidth: Theme.px(420)

    ColumnLayout {
        id: column
        anchors.centerIn: parent
        spacing: Theme.s8
        width: Math.min(parent.width - 2 * Theme.s16, Theme.px(460))

        Rectangle {
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: Theme.s8
            color: Theme.tint(root.color, 0.12)
            implicitHeight: Theme.px(72)
            implicitWidth: Theme.px(72)
            radius: height / 2

            Icon {
                anchors.centerIn: parent
                color: root.color
                name: root.icon
                size: Theme.px(32)
            }
        }
        AppText {
            Layout.fillWidth: true
            Accessible.ignored: true
            font.pixelSize: Theme.textHeadline
            horizontalAlignment: Text.AlignHCenter
            text: root.title
            visible: root.title !== ""
            weight: Font.Bold
            wrapMode: Text.Wrap
        }
        AppText {
            Layout.fillWidth: true
            Accessible.ignored: true
            color: Theme.gMuted
            horizontalAlignment: Text.AlignHCenter
            text: root.text
            visible: root.text !== ""
            wrapMode: Text.Wrap
        }
        RowLayout {
            id: row
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.s8
            spacing: Theme.s8
            visible: children.length > 0
        }
    }
}
