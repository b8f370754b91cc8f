import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Whether the print service answers.
RowLayout {
    id: root

    readonly property bool answers: Ui.session.view.serviceAnswers
    readonly property color tone: answers ? Theme.gGreen : Theme.gRed
    readonly property string text: answers ? "الخدمة تعمل" : "الخدمة متوقفة"

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    spacing: Theme.s8

    Dot {
        color: root.tone
        diameter: Theme.px(9)
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
