import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// Code that can be selected and copied, one line a line. The arrow keys move what is too wide for the place.
Flickable {
    id: root

    property string code

    LayoutMirroring.enabled: false
    LayoutMirroring.childrenInherit: true
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    contentHeight: height
    contentWidth: Math.max(width, text.implicitWidth + 2 * Theme.s16)
    flickableDirection: Flickable.HorizontalFlick
    implicitHeight: text.implicitHeight + 2 * Theme.s12 + (contentWidth > width ? Theme.s8 : 0)
    interactive: contentWidth > width

    T.ScrollBar.horizontal: AppScrollBar {
    }

    SelectableText {
        id: text
        Accessible.name: root.code
        font.family: Theme.monospace
        font.pixelSize: Theme.textSmall
        text: root.code.replace(/^/gm, "\u200e") // each line begins at the left, whatever is in it
        width: root.contentWidth - 2 * Theme.s16
        wrapMode: TextEdit.NoWrap
        x: Theme.s16
        y: Theme.s12

        onCursorRectangleChanged: if (activeFocus) {
            if (cursorRectangle.x < root.contentX)
                root.contentX = Math.max(0, cursorRectangle.x - Theme.s16);
            else if (cursorRectangle.x + 2 * Theme.s16 > root.contentX + root.width)
                root.contentX = Math.min(root.contentWidth - root.width, cursorRectangle.x + 2 * Theme.s16 - root.width);
        }
    }
}
