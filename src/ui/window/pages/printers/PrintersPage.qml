pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The printers there are. Up and Down move between them.
ListPage {
    id: root

    readonly property bool roomy: width >= Theme.px(680)

    function goTo(row: int): void {
        if (row < 0 || row >= list.count)
            return;
        list.currentIndex = row;
        (list.currentItem as PrinterCard).takeFocus();
    }

    model: Ui.session.printers.printers
    page: "printers"
    subtitle: "طابعات النظام والشبكة والبلوتوث المتاحة"

    above: ListSearch {
        found: Ui.session.printers.printers
        list: root.list
        placeholder: "ابحث عن طابعة"
    }
    actions: [
        SecondaryButton {
            id: scan
            Accessible.name: "فحص الاتصال"
            busy: Agent.scanning
            hint: root.roomy ? "" : text
            symbol: "stethoscope"
            text: Agent.scanning ? "جارٍ الفحص…" : "فحص الاتصال"

            contentItem: ButtonContent {
                busy: scan.busy
                font: scan.font
                ink: scan.ink
                symbol: scan.symbol
                text: root.roomy ? scan.text : ""
            }

            onClicked: Ui.session.printers.runScan()
        },
        PrimaryButton {
            symbol: "plus"
            text: "إضافة طابعة"

            onClicked: Ui.session.view.adding = true
        }
    ]
    delegate: PrinterCard {
        width: ListView.view.width

        onOpen: Ui.session.view.edit(printerId)
        onStepped: by => root.goTo(index + by)
    }
    placeholder: ListEmpty {
        anchors.left: parent.left
        anchors.right: parent.right
        expected: "تظهر طابعاتك هنا"
        icon: "printer.fill"
        searching: Ui.session.printers.printers.searching
        text: "وصّل الطابعة أو أضفها من زر «إضافة طابعة»."
        title: "لم يتم العثور على طابعات"
    }
}
