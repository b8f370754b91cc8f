import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Where the receipt goes, and the paper there.
Card {
    id: root

    readonly property bool reaches: DesignerPresenter.connected.length > 0

    icon: "printer.fill"
    title: "الطابعة والورق"

    DesignerChoice {
        label: "الطابعة"
        options: DesignerPresenter.connected
        value: DesignerPresenter.selected
        visible: root.reaches

        onChosen: value => DesignerPresenter.__printerId = value
    }
    Note {
        Layout.fillWidth: true
        color: Theme.gAmber
        icon: "printer.dotmatrix"
        text: "لا توجد طابعة متصلة حاليًا. وصّل الطابعة ثم افحص الاتصال من «نظرة عامة»."
        visible: !root.reaches
    }
    DesignerChoice {
        label: "عرض الورق"
        options: DesignerPresenter.paperWidths
        value: DesignerPresenter.__doc.paperWidthMm

        onChosen: value => DesignerPresenter.__doc.paperWidthMm = value
    }
    DesignerInput {
        hint: "تظهر بجانب الأسعار"
        label: "العملة"
        text: DesignerPresenter.__doc.currency

        onEdited: text => DesignerPresenter.__doc.currency = text
    }
}
