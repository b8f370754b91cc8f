import QtQuick
import QtQuick.Window
import Zemrak.Kit

// Scrolls `view` so that the item with the focus stays visible. Put it beside that view.
Item {
    id: root

    required property Flickable view
    readonly property Item focused: Window.activeFocusItem

    function isInside(item: Item): bool {
        for (let at = item; at; at = at.parent) {
            if (at === view.contentItem)
                return true;
        }
        return false;
    }

    onFocusedChanged: {
        if (!focused || !isInside(focused) || focused.height > view.height)
            return;
        const top = focused.mapToItem(view.contentItem, 0, 0).y - Theme.s24;
        const bottom = top + focused.height + 2 * Theme.s24;
        const last = Math.max(view.originY, view.originY + view.contentHeight - view.height);
        if (top < view.contentY)
            view.contentY = Math.max(view.originY, top);
        else if (bottom > view.contentY + view.height)
            view.contentY = Math.min(last, bottom - view.height);
    }
}
