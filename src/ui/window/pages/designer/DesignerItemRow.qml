import QtQuick
import Zemrak.Kit
import Zemrak.Window

// One product of the receipt: what it is, how many, for how much each. Enter goes on to the next of these.
FocusScope {
    id: root

    required property int index
    required property string itemId
    required property string name
    required property string qty
    required property string price
    property real qtyWidth
    property real priceWidth

    signal before() // Shift and Tab, in the first field
    signal after() // Tab, at the last control
    signal finished() // Enter, in the last field

    function takeFirst(): void {
        nameField.forceActiveFocus(Qt.TabFocusReason);
    }
    function takeLast(): void {
        bin.forceActiveFocus(Qt.BacktabFocusReason);
    }

    implicitHeight: nameField.implicitHeight

    Row {
        id: row
        anchors.fill: parent
        spacing: Theme.s8

        Input {
            id: nameField
            focus: true
            maximumLength: DesignerPresenter.longestText
            name: "اسم المنتج " + (root.index + 1)
            placeholder: "اسم المنتج"
            text: root.name
            width: root.width - qtyField.width - priceField.width - bin.width - 3 * row.spacing

            Keys.onBacktabPressed: root.before()
            onAccepted: qtyField.forceActiveFocus(Qt.TabFocusReason)
            onTextEdited: DesignerPresenter.setItemName(root.itemId, text)
        }
        Input {
            id: qtyField
            maximumLength: DesignerPresenter.longestText
            name: "الكمية " + (root.index + 1)
            placeholder: "الكمية"
            text: root.qty
            width: root.qtyWidth

            onAccepted: priceField.forceActiveFocus(Qt.TabFocusReason)
            onTextEdited: DesignerPresenter.setItemQty(root.itemId, text)
        }
        Input {
            id: priceField
            maximumLength: DesignerPresenter.longestText
            name: "السعر " + (root.index + 1)
            placeholder: "السعر"
            text: root.price
            width: root.priceWidth

            onAccepted: root.finished()
            onTextEdited: DesignerPresenter.setItemPrice(root.itemId, text)
        }
        IconButton {
            id: bin
            Accessible.description: "المنتج " + (root.index + 1) + (root.name === "" ? "" : "، " + root.name)
            anchors.verticalCenter: parent.verticalCenter
            symbol: "trash"
            text: "حذف"

            Keys.onTabPressed: root.after()
            onClicked: DesignerPresenter.removeItem(root.itemId)
        }
    }
}
