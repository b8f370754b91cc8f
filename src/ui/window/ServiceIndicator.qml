import QtQuick
import QtQuick.Layouts
import Zemrak

// Whether the print service answers.
RowLayout {
    id: root

    readonly property bool answers: MainView.serviceAnswers
    readonly property color tone: answers ? Theme.gGreen : Theme.gRed
    readonly property string text: answers ? "الخدمة تعمل" : "الخدمة متوقفة"

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    spacing: Theme.s8

    Rectangle {
        color: root.tone
        implicitHeight: Theme.px(9)
        implicitWidth: Theme.px(9)
        radius: height / 2
    }
    LineText {
        Layout.fillWidth: true
        Accessible.ignored: true
        color: root.tone
        font.pixelSize: Theme.textSmall
        value: root.text
        weight: Font.Bold
    }
}
