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
        text: DesignerPresenter.__doc.footer

        onEdited: text => DesignerPresenter.__doc.footer = text
    }
    DesignerInput {
        label: "ملاحظة إضافية"
        text: DesignerPresenter.__doc.footerNote

        onEdited: text => DesignerPresenter.__doc.footerNote = text
    }
    DesignerSwitch {
        label: "قص الورقة بعد الطباعة"
        on: DesignerPresenter.__doc.cut

        onToggled: value => DesignerPresenter.__doc.cut = value
    }
    DesignerSwitch {
        hint: "يعمل إن كان الدرج موصولًا بالطابعة"
        label: "فتح درج النقود"
        on: DesignerPresenter.__doc.drawer

        onToggled: value => DesignerPresenter.__doc.drawer = value
    }
    DesignerSwitch {
        label: "صفير بعد الطباعة"
        on: DesignerPresenter.__doc.beep

        onToggled: value => DesignerPresenter.__doc.beep = value
    }
}
