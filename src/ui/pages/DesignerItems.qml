pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak

// The products and what is taken off or put on their sum. As tall as all of its rows, of which only those in sight of
// the page exist; the keyboard goes from row to row whatever exists.
Card {
    id: root

    required property Flickable view
    readonly property int count: list.count
    readonly property real qtyWidth: Theme.px(62)
    readonly property real priceWidth: Theme.px(80)
    readonly property real step: Theme.controlHeight + Theme.s8

    function goTo(row: int, last: bool): void {
        list.currentIndex = row;
        const item = list.currentItem as DesignerItemRow;
        if (last)
            item.takeLast();
        else
            item.takeFirst();
    }
    // Enter at the end of a row: to the next, or to a new one, unless this one says nothing yet.
    function finish(row: int, name: string, price: string): void {
        if (row + 1 < count)
            goTo(row + 1, false);
        else if (name !== "" || price !== "")
            add.clicked();
    }

    icon: "cart.fill"
    title: "المنتجات والأسعار"

    RowLayout {
        spacing: Theme.s8
        visible: root.count > 0

        Repeater {
            model: [
                {
                    text: "اسم المنتج",
                    width: -1
                },
                {
                    text: "الكمية",
                    width: root.qtyWidth
                },
                {
                    text: "السعر",
                    width: root.priceWidth
                },
                {
                    text: "",
                    width: Theme.compactHeight
                }
            ]

            LineText {
                required property var modelData

                Layout.fillWidth: modelData.width < 0
                Layout.preferredWidth: modelData.width
                Accessible.ignored: true // each field is called so
                color: Theme.gMuted
                font.pixelSize: Theme.textSmall
                value: modelData.text
            }
        }
    }
    Item {
        id: place

        // In the content of the page; each of those in between may move it.
        readonly property real above: {
            let sum = 0;
            for (let at = place; at && at !== root.view.contentItem; at = at.parent)
                sum += at.y;
            return sum;
        }
        readonly property real from: Math.max(0, Math.min(root.view.contentY - above, height - list.height))

        function settle(): void {
            if (list.contentY !== list.originY + from)
                list.contentY = list.originY + from;
        }

        Layout.fillWidth: true
        implicitHeight: Math.max(0, root.count * root.step - Theme.s8)
        visible: root.count > 0

        onFromChanged: settle()

        // The way in from above.
        Item {
            id: entry
            activeFocusOnTab: root.count > 0

            onActiveFocusChanged: if (activeFocus)
                root.goTo(0, false)
        }
        ListView {
            id: list
            Accessible.name: root.title
            Accessible.role: Accessible.List
            height: Math.min(place.height, root.view.height)
            highlightFollowsCurrentItem: false
            interactive: false
            model: DesignerView.items
            spacing: Theme.s8
            width: place.width
            y: place.from

            delegate: DesignerItemRow {
                id: row
                priceWidth: root.priceWidth
                qtyWidth: root.qtyWidth
                width: ListView.view.width

                onActiveFocusChanged: if (activeFocus)
                    list.currentIndex = index
                onAfter: row.index + 1 < root.count ? root.goTo(row.index + 1, false) : add.forceActiveFocus(Qt.TabFocusReason)
                onBefore: row.index > 0 ? root.goTo(row.index - 1, true) : entry.nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
                onFinished: root.finish(row.index, row.name, row.price)
            }

            onContentYChanged: place.settle()
            onOriginYChanged: place.settle()
        }
    }
    SecondaryButton {
        id: add
        enabled: DesignerView.canAddItem
        symbol: "plus"
        text: "إضافة منتج"

        Keys.onBacktabPressed: root.count > 0 ? root.goTo(root.count - 1, true) : entry.nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
        onClicked: {
            DesignerView.addItem();
            list.forceLayout(); // takes the new row in at once
            root.goTo(list.count - 1, false);
        }
    }
    Note {
        Layout.fillWidth: true
        color: Theme.gAmber
        icon: "exclamationmark.triangle.fill"
        text: DesignerView.itemsProblem
        visible: text !== ""
    }
    Divider {
    }
    DesignerInput {
        ltr: true
        label: "الخصم (مبلغ)"
        text: DesignerView.__doc.discount

        onEdited: text => DesignerView.__doc.discount = text
    }
    DesignerInput {
        hint: "اتركه فارغًا لعدم إظهار الضريبة"
        label: "ضريبة القيمة المضافة %"
        ltr: true
        text: DesignerView.__doc.vatPercent

        onEdited: text => DesignerView.__doc.vatPercent = text
    }
}
