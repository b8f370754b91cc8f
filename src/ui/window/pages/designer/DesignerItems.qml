pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The products, and what is taken off or put on their sum.
Card {
    id: root

    required property Flickable view

    icon: "cart.fill"
    title: "المنتجات والأسعار"

    RowLayout {
        spacing: Theme.s8
        visible: list.count > 0

        Repeater {
            model: [["اسم المنتج", -1], ["الكمية", list.qtyWidth], ["السعر", list.priceWidth], ["", Theme.compactHeight]]

            LineText {
                required property var modelData

                Layout.fillWidth: modelData[1] < 0
                Layout.preferredWidth: modelData[1]
                Accessible.ignored: true // each field is called so
                color: Theme.gMuted
                font.pixelSize: Theme.textSmall
                value: modelData[0]
            }
        }
    }
    DesignerItemList {
        id: list
        Layout.fillWidth: true
        view: root.view
        visible: count > 0

        onPassed: add.forceActiveFocus(Qt.TabFocusReason)
        onWanted: add.clicked()
    }
    SecondaryButton {
        id: add
        enabled: DesignerPresenter.canAddItem
        symbol: "plus"
        text: "إضافة منتج"

        Keys.onBacktabPressed: event => {
            event.accepted = list.count > 0;
            if (event.accepted)
                list.goToEnd(true);
        }
        onClicked: {
            if (!DesignerPresenter.canAddItem)
                return;
            DesignerPresenter.addItem();
            list.goToEnd(false);
        }
    }
    Note {
        Layout.fillWidth: true
        color: Theme.gAmber
        icon: "exclamationmark.triangle.fill"
        text: DesignerPresenter.itemsProblem
        visible: text !== ""
    }
    Divider {
    }
    DesignerInput {
        label: "الخصم (مبلغ)"
        text: DesignerPresenter.__doc.discount

        onEdited: text => DesignerPresenter.__doc.discount = text
    }
    DesignerInput {
        hint: "اتركه فارغًا لعدم إظهار الضريبة"
        label: "ضريبة القيمة المضافة %"
        text: DesignerPresenter.__doc.vatPercent

        onEdited: text => DesignerPresenter.__doc.vatPercent = text
    }
}
