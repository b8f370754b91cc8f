import Zemrak.Kit
import Zemrak.Window

CodeBlock {
    required property DocsBlock block

    code: block.code
    lang: block.lang

    onCopy: Ui.session.docs.tellCodeCopied()
}
