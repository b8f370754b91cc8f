pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// Whose wizard this is, and how far it has come.
Item {
    id: root

    property string counter
    property int step: 0

    implicitHeight: Math.max(brand.implicitHeight, marks.implicitHeight)

    RowLayout {
        id: brand
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.s12

        Image {
            Accessible.ignored: true
            Layout.preferredHeight: Theme.px(36)
            Layout.preferredWidth: Theme.px(36)
            source: "qrc:/zemrak/logo-circle.png"
            sourceSize.height: 72
            sourceSize.width: 72
        }
        LineText {
            color: Theme.onFill
            font.pixelSize: Theme.textHeadline
            value: "Zemrak Printer"
            weight: Font.Bold
        }
    }
    RowLayout {
        id: marks
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.s8

        LineText {
            Layout.rightMargin: Theme.s8
            color: Theme.tint(Theme.onFill, 0.72)
            value: root.counter
        }
        Repeater {
            model: 4

            Rectangle {
                required property int index

                color: index <= root.step ? Theme.onFill : Theme.tint(Theme.onFill, 0.2)
                implicitHeight: Theme.px(6)
                implicitWidth: index === root.step ? Theme.px(28) : Theme.px(12)
                radius: height / 2
            }
        }
    }
}
