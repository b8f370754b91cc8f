pragma ComponentBehavior: Bound

import QtQuick
import Zemrak.Kit
import Zemrak.Window

// The products' rows in a form that scrolls as a whole. As tall as all of them, of which only those in sight exist; the
// keyboard goes from row to row whatever exists.
FocusScope {
    id: root

    required property Flickable view // what scrolls the form
    readonly property int count: list.count
    readonly property real qtyWidth: Theme.px(62)
    readonly property real priceWidth: Theme.px(80)
    readonly property real step: Theme.controlHeight + Theme.s8

    // In the content of the view; each of those in between may move it.
    readonly property real above: {
        let sum = 0;
        for (let at = root; at && at !== view.contentItem; at = at.parent)
            sum += at.y;
        return sum;
    }
    readonly property real from: Math.max(0, Math.min(view.contentY - above, height - list.height))

    signal passed() // Tab, at the last control
    signal wanted() // Enter at the end of the last row, which says something: one more

    function goTo(row: int, last: bool): void {
        list.forceLayout(); // takes a new row in at once
        list.currentIndex = row;
        const item = list.currentItem as DesignerItemRow;
        if (last)
            item.takeLast();
        else
            item.takeFirst();
    }
    function goToEnd(last: bool): void {
        list.forceLayout();
        goTo(list.count - 1, last);
    }
    function goBefore(): void {
        entry.nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason);
    }
    function goAfter(row: int): void {
        if (row + 1 < count)
            goTo(row + 1, false);
        else
            passed();
    }
    function finish(row: int, saysSomething: bool): void {
        if (row + 1 < count)
            goTo(row + 1, false);
        else if (saysSomething)
            wanted();
    }
    function settle(): void {
        if (list.contentY !== list.originY + from)
            list.contentY = list.originY + from;
    }

    implicitHeight: Math.max(0, count * step - Theme.s8)

    onCountChanged: if (count === 0 && activeFocus)
        passed()
    // Not at once: rows that come or go may move the focus, and with it what scrolls.
    onFromChanged: Qt.callLater(settle) // qmllint disable

    // The way in from above.
    Item {
        id: entry
        activeFocusOnTab: root.count > 0

        onActiveFocusChanged: if (activeFocus)
            root.goTo(0, false)
    }
    ListView {
        id: list
        Accessible.name: "المنتجات"
        Accessible.role: Accessible.List
        height: Math.min(root.height, root.view.height)
        highlightFollowsCurrentItem: false
        interactive: false
        model: DesignerPresenter.items
        spacing: Theme.s8
        width: root.width
        y: root.from

        delegate: DesignerItemRow {
            id: row
            priceWidth: root.priceWidth
            qtyWidth: root.qtyWidth
            width: ListView.view.width

            onActiveFocusChanged: if (activeFocus)
                list.currentIndex = index
            onAfter: root.goAfter(row.index)
            onBefore: row.index > 0 ? root.goTo(row.index - 1, true) : root.goBefore()
            onFinished: root.finish(row.index, row.name !== "" || row.price !== "")
        }

        onContentYChanged: root.settle()
        onOriginYChanged: root.settle()
    }
}
