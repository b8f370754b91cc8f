import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Whose receipt it is, and what it is about.
Card {
    icon: "building.2.fill"
    title: "ترويسة الورقة"

    GridLayout {
        id: grid
        Layout.fillWidth: true
        columnSpacing: Theme.s12
        columns: width >= Theme.px(300) ? 2 : 1
        rowSpacing: Theme.s12

        DesignerInput {
            Layout.columnSpan: grid.columns
            label: "اسم المنشأة"
            text: DesignerPresenter.__doc.businessName

            onEdited: text => DesignerPresenter.__doc.businessName = text
        }
        DesignerInput {
            Layout.columnSpan: grid.columns
            label: "وصف مختصر"
            text: DesignerPresenter.__doc.subtitle

            onEdited: text => DesignerPresenter.__doc.subtitle = text
        }
        DesignerInput {
            Layout.columnSpan: grid.columns
            label: "العنوان"
            text: DesignerPresenter.__doc.address

            onEdited: text => DesignerPresenter.__doc.address = text
        }
        DesignerInput {
            label: "الهاتف"
            text: DesignerPresenter.__doc.phone

            onEdited: text => DesignerPresenter.__doc.phone = text
        }
        DesignerInput {
            label: "الرقم الضريبي"
            text: DesignerPresenter.__doc.taxNumber

            onEdited: text => DesignerPresenter.__doc.taxNumber = text
        }
        DesignerInput {
            label: "عنوان الورقة"
            text: DesignerPresenter.__doc.title

            onEdited: text => DesignerPresenter.__doc.title = text
        }
        DesignerInput {
            label: "رقم الفاتورة"
            text: DesignerPresenter.__doc.receiptNo

            onEdited: text => DesignerPresenter.__doc.receiptNo = text
        }
        DesignerInput {
            label: "العميل"
            text: DesignerPresenter.__doc.customer

            onEdited: text => DesignerPresenter.__doc.customer = text
        }
        DesignerInput {
            label: "الموظف / الكاشير"
            text: DesignerPresenter.__doc.cashier

            onEdited: text => DesignerPresenter.__doc.cashier = text
        }
        DesignerInput {
            Layout.columnSpan: grid.columns
            label: "طريقة الدفع"
            text: DesignerPresenter.__doc.payment

            onEdited: text => DesignerPresenter.__doc.payment = text
        }
    }
}
