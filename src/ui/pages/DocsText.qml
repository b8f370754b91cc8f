import Zemrak

SelectableText {
    required property DocsBlock block

    activeFocusOnTab: false
    value: block.blockText
}
