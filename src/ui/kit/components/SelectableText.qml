import QtQuick
import Zemrak.Kit

// Text that can be selected with the mouse or the keyboard and copied. `ltr` for addresses and identifiers.
TextEdit {
    id: root

    property string value
    property bool ltr: false

    Accessible.name: value
    Accessible.readOnly: true
    Accessible.role: Accessible.StaticText
    activeFocusOnTab: true
    color: Theme.gText
    font.family: Theme.family
    font.pixelSize: Theme.textBody
    horizontalAlignment: TextEdit.AlignLeft
    persistentSelection: false
    readOnly: true
    selectByMouse: true
    selectedTextColor: Theme.onFill
    selectionColor: Theme.primaryFill
    text: ltr ? "\u200e" + value : value
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.Wrap

    Keys.onPressed: event => {
        if (event.matches(StandardKey.Copy) && selectedText !== "") {
            Clipboard.copy(selectedText);
            event.accepted = true;
        }
    }
    onActiveFocusChanged: if (!activeFocus) deselect()

    HoverHandler {
        cursorShape: Qt.IBeamCursor
    }
    FocusRing {
        shown: root.activeFocus && root.selectedText === ""
    }
}
