import QtQuick
import Zemrak.Kit

// One line, cut short with an ellipsis; the whole of it in a hint while the pointer rests on it. Line ends become blanks.
AppText {
    id: root

    property string value

    Accessible.name: value
    elide: Text.ElideRight
    lineHeight: 1
    maximumLineCount: 1
    text: value.replace(/\s+/g, " ")

    HoverHandler {
        id: hover
        enabled: root.truncated
    }
    Hint {
        shown: hover.hovered
        text: root.value
    }
}
