import QtQuick
import Zemrak.Kit

// A count in a badge; hidden at zero.
Rectangle {
    id: root

    property int count: 0

    color: Theme.dangerFill
    implicitHeight: label.implicitHeight + 2
    implicitWidth: Math.max(implicitHeight, label.implicitWidth + Theme.s12)
    radius: height / 2
    visible: count >= 1

    AppText {
        id: label
        anchors.centerIn: parent
        Accessible.ignored: true
        color: Theme.onFill
        font.pixelSize: Theme.textSmall
        lineHeight: 1
        text: String(root.count)
        weight: Font.Bold
    }
}
