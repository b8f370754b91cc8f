import QtQuick
import Zemrak.Kit

// One line of the paper: a text, a text with an amount at the other edge, a rule, or the place of a symbol.
Item {
    id: root

    required property string kind
    required property string label
    required property string text
    required property string amount
    required property bool centred
    required property bool strong
    required property bool large
    required property string symbol
    required property size dots
    property real dot: 1 // the paper's scale: pixels of a printer's dot

    readonly property real letters: Math.round(dot * (large ? 54 : 30))
    readonly property real gap: dot * 6
    readonly property bool split: amount !== ""
    readonly property bool crowded: split && textSize.advanceWidth + amountSize.advanceWidth + 4 * gap > width

    Accessible.ignored: kind !== "text"
    Accessible.name: (label + " " + text + " " + amount).trim()
    Accessible.role: Accessible.StaticText
    implicitHeight: kind === "rule" ? 4 * gap : kind === "symbol" ? dots.height * dot + 4 * gap : (crowded ? start.height + end.height : Math.max(start.height, end.height)) + gap

    Text {
        id: start
        Accessible.ignored: true
        color: Theme.paperInk
        font.family: Theme.family
        font.pixelSize: root.letters
        font.weight: root.strong ? Font.Bold : Font.Normal
        horizontalAlignment: root.centred ? Text.AlignHCenter : Text.AlignLeft
        text: root.label === "" ? root.text : root.label + " \u2068" + root.text + "\u2069"
        textFormat: Text.PlainText
        visible: root.kind === "text"
        width: root.width
        wrapMode: Text.Wrap
    }
    TextMetrics {
        id: textSize
        font: start.font
        text: start.text
    }
    Text {
        id: end
        Accessible.ignored: true
        color: Theme.paperInk
        font: start.font
        horizontalAlignment: Text.AlignRight
        text: "\u2066" + root.amount + "\u2069"
        textFormat: Text.PlainText
        visible: root.split
        width: root.width
        wrapMode: Text.Wrap
        y: root.crowded ? start.height : 0
    }
    TextMetrics {
        id: amountSize
        font: start.font
        text: end.text
    }
    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.paperInk
        height: Theme.stroke
        opacity: 0.5
        visible: root.kind === "rule"
        width: parent.width
    }
    Rectangle {
        anchors.centerIn: parent
        border.color: Theme.paperInk
        border.width: Theme.stroke
        color: "transparent"
        height: root.dots.height * root.dot
        visible: root.kind === "symbol"
        width: root.dots.width * root.dot

        Icon {
            anchors.centerIn: parent
            color: Theme.paperInk
            name: root.symbol
            size: Math.min(parent.width, parent.height) - 2 * Theme.stroke
        }
    }
}
