import Zemrak

Note {
    required property DocsBlock block

    text: block.blockText
}
