import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Where the receipt goes, and the paper there.
Card {
    id: root

    readonly property bool reaches: DesignerView.connected.length > 0

    icon: "printer.fill"
    title: "الطابعة والورق"

    DesignerChoice {
        label: "الطابعة"
        options: DesignerView.connected
        value: DesignerView.selected
        visible: root.reaches

        onChosen: value => DesignerView.__printerId = value
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
        options: DesignerView.paperWidths
        value: DesignerView.__doc.paperWidthMm

        onChosen: value => DesignerView.__doc.paperWidthMm = value
    }
    DesignerInput {
        hint: "تظهر بجانب الأسعار"
        label: "العملة"
        text: DesignerView.__doc.currency

        onEdited: text => DesignerView.__doc.currency = text
    }
}
