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
            text: DesignerView.__doc.businessName

            onEdited: text => DesignerView.__doc.businessName = text
        }
        DesignerInput {
            Layout.columnSpan: grid.columns
            label: "وصف مختصر"
            text: DesignerView.__doc.subtitle

            onEdited: text => DesignerView.__doc.subtitle = text
        }
        DesignerInput {
            Layout.columnSpan: grid.columns
            label: "العنوان"
            text: DesignerView.__doc.address

            onEdited: text => DesignerView.__doc.address = text
        }
        DesignerInput {
            label: "الهاتف"
            text: DesignerView.__doc.phone

            onEdited: text => DesignerView.__doc.phone = text
        }
        DesignerInput {
            label: "الرقم الضريبي"
            text: DesignerView.__doc.taxNumber

            onEdited: text => DesignerView.__doc.taxNumber = text
        }
        DesignerInput {
            label: "عنوان الورقة"
            text: DesignerView.__doc.title

            onEdited: text => DesignerView.__doc.title = text
        }
        DesignerInput {
            label: "رقم الفاتورة"
            text: DesignerView.__doc.receiptNo

            onEdited: text => DesignerView.__doc.receiptNo = text
        }
        DesignerInput {
            label: "العميل"
            text: DesignerView.__doc.customer

            onEdited: text => DesignerView.__doc.customer = text
        }
        DesignerInput {
            label: "الموظف / الكاشير"
            text: DesignerView.__doc.cashier

            onEdited: text => DesignerView.__doc.cashier = text
        }
        DesignerInput {
            Layout.columnSpan: grid.columns
            label: "طريقة الدفع"
            text: DesignerView.__doc.payment

            onEdited: text => DesignerView.__doc.payment = text
        }
    }
}
