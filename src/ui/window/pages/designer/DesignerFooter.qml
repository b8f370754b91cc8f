import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// What stands at the end of the receipt, and what the printer does then.
Card {
    icon: "slider.horizontal.3"
    title: "التذييل والخيارات"

    DesignerInput {
        label: "عبارة التذييل"
        text: DesignerView.__doc.footer

        onEdited: text => DesignerView.__doc.footer = text
    }
    DesignerInput {
        label: "ملاحظة إضافية"
        text: DesignerView.__doc.footerNote

        onEdited: text => DesignerView.__doc.footerNote = text
    }
    DesignerSwitch {
        label: "قص الورقة بعد الطباعة"
        on: DesignerView.__doc.cut

        onToggled: value => DesignerView.__doc.cut = value
    }
    DesignerSwitch {
        hint: "يعمل إن كان الدرج موصولًا بالطابعة"
        label: "فتح درج النقود"
        on: DesignerView.__doc.drawer

        onToggled: value => DesignerView.__doc.drawer = value
    }
    DesignerSwitch {
        label: "صفير بعد الطباعة"
        on: DesignerView.__doc.beep

        onToggled: value => DesignerView.__doc.beep = value
    }
}
