import QtQuick
import Zemrak.Kit
import Zemrak.Window

// Copies the whole log, and says for a moment that it did.
SecondaryButton {
    id: root

    enabled: Agent.log !== ""
    symbol: said.running ? "checkmark" : "doc.on.doc"
    text: said.running ? "تم النسخ" : "نسخ"

    onClicked: {
        Clipboard.copy(Agent.log);
        said.restart();
    }

    Timer {
        id: said
        interval: 1600
    }
}
