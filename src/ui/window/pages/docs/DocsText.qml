import Zemrak.Kit
import Zemrak.Window

SelectableText {
    required property DocsBlock block

    activeFocusOnTab: false
    value: block.blockText
}
