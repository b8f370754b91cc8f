import QtQuick
import Zemrak.Kit
import Zemrak.Window

AppText {
    required property DocsBlock block

    Accessible.role: Accessible.Heading
    font.pixelSize: Theme.textHeadline
    text: block.blockText
    topPadding: block.index > 0 ? Theme.s12 : 0
    weight: Font.Bold
    wrapMode: Text.Wrap
}
