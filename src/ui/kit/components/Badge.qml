import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// A small coloured label: a dot in the colour itself, and the words in a shade of it that can be read.
Item {
    id: root

    property string text
    property color color: Theme.gMuted

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    implicitHeight: row.implicitHeight + Theme.s8
    implicitWidth: row.implicitWidth + Theme.s20

    Rectangle {
        anchors.fill: parent
        color: Theme.tint(root.color, 0.14)
        radius: height / 2
    }
    RowLayout {
        id: row
        anchors.fill: parent
        anchors.leftMargin: Theme.s8 + 2
        anchors.rightMargin: Theme.s8 + 2
        spacing: Theme.s8 - 2

        Dot {
            color: root.color
            diameter: Theme.px(7)
        }
        LineText {
            Layout.fillWidth: true
            Accessible.ignored: true
            color: Theme.readable(root.color)
            font.pixelSize: Theme.textSmall
            value: root.text
            weight: Font.Medium
        }
    }
}
