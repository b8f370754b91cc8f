import Zemrak.Kit
import Zemrak.Window

Note {
    required property DocsBlock block

    text: block.blockText
}
