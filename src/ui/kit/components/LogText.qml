import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// The service's log as it was printed, scrolling in a well; it can be selected and copied. What is added at the end and
// dropped at the start moves neither the selection nor the lines that are read; who looks at the end stays there.
Rectangle {
    id: root

    property string log
    property string shown // what stands in the text; each line begins left-to-right, whatever is in it
    property bool following: true
    property bool taking: false
    readonly property real end: Math.max(0, view.contentHeight - view.height)

    function take(): void {
        const next = log.replace(/\n/g, "\n\u200e");
        let gone = 0;
        while (gone < shown.length && !next.startsWith(shown.slice(gone)))
            ++gone;
        taking = true;
        const first = text.positionAt(0, view.contentY - text.y);
        const above = view.contentY - text.positionToRectangle(first).y;
        text.remove(0, gone);
        text.insert(text.length, next.slice(shown.length - gone));
        shown = next;
        const stays = text.positionToRectangle(Math.max(0, first - gone)).y + above;
        view.contentY = following ? end : Math.max(0, Math.min(end, stays));
        taking = false;
    }
    function scrollBy(distance: real): void {
        view.contentY = Math.max(0, Math.min(end, view.contentY + distance));
    }

    Accessible.name: "سجل الخدمة"
    Accessible.role: Accessible.Pane
    activeFocusOnTab: true
    border.color: Theme.gBorder
    border.width: Theme.stroke
    color: Theme.well
    implicitHeight: Math.min(Math.max(text.implicitHeight, none.implicitHeight) + 2 * Theme.s16, Theme.px(220))
    implicitWidth: Theme.px(480)
    radius: Theme.radiusControl

    Component.onCompleted: take()
    Keys.onDownPressed: scrollBy(Theme.s40)
    Keys.onPressed: event => {
        event.accepted = true;
        if (event.matches(StandardKey.SelectAll)) {
            text.forceActiveFocus();
            text.selectAll();
        } else if (event.matches(StandardKey.MoveToNextPage)) {
            scrollBy(view.height - Theme.s40);
        } else if (event.matches(StandardKey.MoveToPreviousPage)) {
            scrollBy(Theme.s40 - view.height);
        } else if (event.key === Qt.Key_Home) {
            scrollBy(-view.contentHeight);
        } else if (event.key === Qt.Key_End) {
            scrollBy(view.contentHeight);
        } else {
            event.accepted = false;
        }
    }
    Keys.onUpPressed: scrollBy(-Theme.s40)
    onLogChanged: take()

    Flickable {
        id: view
        anchors.fill: parent
        anchors.margins: Theme.stroke
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        contentHeight: text.implicitHeight + 2 * Theme.s16
        interactive: contentHeight > height
        visible: root.log !== ""

        T.ScrollBar.vertical: AppScrollBar {
        }

        onContentHeightChanged: if (root.following && !root.taking)
            contentY = root.end
        onContentYChanged: if (!root.taking)
            root.following = contentY >= root.end - 1
        onHeightChanged: if (root.following)
            contentY = root.end

        SelectableText {
            id: text
            LayoutMirroring.enabled: false
            Accessible.name: root.log
            activeFocusOnTab: false
            font.family: Theme.monospace
            font.pixelSize: Theme.textSmall
            width: view.width - 2 * Theme.s16
            wrapMode: TextEdit.WrapAnywhere
            x: Theme.s16
            y: Theme.s16
        }
    }
    AppText {
        id: none
        anchors.centerIn: parent
        color: Theme.gMuted
        text: "لا توجد رسائل."
        visible: root.log === ""
    }
    FocusRing {
        shown: root.activeFocus
    }
}
