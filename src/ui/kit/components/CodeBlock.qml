import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Zemrak.Kit

// A sample of code in a well, left-to-right, under its language and a button that copies all of it. Lines that are too
// long scroll to the side.
Rectangle {
    id: root

    property string lang
    property string code
    property bool __copied: false

    signal copy

    function copyAll(): void {
        Clipboard.copy(code);
        __copied = true;
        root.copy();
        said.restart();
    }

    Accessible.name: lang
    Accessible.role: Accessible.Grouping
    border.color: Theme.gBorder
    border.width: Theme.stroke
    color: Theme.well
    implicitHeight: column.implicitHeight
    implicitWidth: Theme.px(480)
    radius: Theme.radiusControl

    Timer {
        id: said
        interval: 1600

        onTriggered: root.__copied = false
    }
    ColumnLayout {
        id: column
        anchors.left: parent.left
        anchors.right: parent.right
        spacing: 0

        RowLayout {
            Layout.fillWidth: true
            Layout.leftMargin: Theme.s16
            Layout.margins: Theme.s4
            Layout.rightMargin: Theme.s4

            LtrText {
                Layout.fillWidth: true
                code: root.lang
                color: Theme.gMuted
                font.family: Theme.monospace
                font.pixelSize: Theme.textSmall
            }
            BaseButton {
                id: button
                Accessible.name: "نسخ الكود"
                font.pixelSize: Theme.textSmall
                ground: down ? Theme.pressed : hovered ? Theme.hover : "transparent"
                implicitHeight: Theme.compactHeight
                ink: root.__copied ? Theme.readable(Theme.gGreen) : Theme.gMuted
                leftPadding: Theme.s12
                rightPadding: Theme.s12
                symbol: root.__copied ? "checkmark" : "doc.on.doc"
                text: root.__copied ? "تم النسخ" : "نسخ"

                onClicked: root.copyAll()
            }
        }
        Divider {
            Layout.fillWidth: true
        }
        CodeText {
            Layout.fillWidth: true
            code: root.code
        }
    }
}
