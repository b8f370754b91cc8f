import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// A remark beside its symbol, on a tint of its colour.
Item {
    id: root

    property string icon: "info.circle.fill"
    property string text
    property color color: Theme.gPrimary

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    implicitHeight: row.implicitHeight
    implicitWidth: row.implicitWidth + 2 * Theme.s16

    Rectangle {
        anchors.fill: parent
        color: Theme.tint(root.color, 0.10)
        radius: Theme.radiusControl
    }
    RowLayout {
        id: row
        anchors.fill: parent
        anchors.leftMargin: Theme.s16
        anchors.rightMargin: Theme.s16
        spacing: Theme.s12

        Icon {
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: Theme.s12 + 2
            color: root.color
            name: root.icon
        }
        AppText {
            Layout.bottomMargin: Theme.s12
            Layout.fillWidth: true
            Layout.topMargin: Theme.s12
            Accessible.ignored: true
            text: root.text
            wrapMode: Text.Wrap
        }
    }
}
