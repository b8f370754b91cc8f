import QtQuick
import Zemrak

// The service's log as it was printed, in a well; it can be selected and copied.
Rectangle {
    id: root

    property string log

    border.color: Theme.gBorder
    border.width: Theme.stroke
    color: Theme.well
    implicitHeight: text.implicitHeight + 2 * Theme.s16
    implicitWidth: Theme.px(480)
    radius: Theme.radiusControl

    SelectableText {
        id: text
        anchors.left: parent.left
        anchors.leftMargin: Theme.s16
        anchors.right: parent.right
        anchors.rightMargin: Theme.s16
        anchors.verticalCenter: parent.verticalCenter
        LayoutMirroring.enabled: root.log === ""
        color: root.log === "" ? Theme.gMuted : Theme.gText
        font.family: root.log === "" ? Theme.family : Theme.monospace
        font.pixelSize: Theme.textSmall
        value: root.log === "" ? "لا توجد رسائل." : root.log
        wrapMode: TextEdit.WrapAnywhere
    }
}
