import QtQuick
import Zemrak.Kit

// Text as it is, never as markup. Begins at the reading edge, also when all of it is Latin.
Text {
    property int weight: Font.Normal

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    color: Theme.gText
    font.family: Theme.family
    font.pixelSize: Theme.textBody
    font.weight: weight
    horizontalAlignment: Text.AlignLeft
    lineHeight: Theme.leading
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter
}
