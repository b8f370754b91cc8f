import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The button that prints, and where to.
RowLayout {
    id: root

    property bool wide: false // the words beside the button

    spacing: Theme.s16

    LineText {
        Layout.fillWidth: true
        color: Theme.gMuted
        font.pixelSize: Theme.textSmall
        value: DesignerPresenter.destination === "" ? "لا توجد طابعة متصلة" : "إلى «\u2068" + DesignerPresenter.destination + "\u2069»"
        visible: root.wide
    }
    PrimaryButton {
        Layout.fillWidth: !root.wide
        Accessible.description: DesignerPresenter.destination
        busy: DesignerPresenter.__printing
        enabled: DesignerPresenter.canPrint
        symbol: "printer.fill"
        text: DesignerPresenter.__printing ? "جارٍ الإرسال…" : "اطبع الورقة"

        onClicked: DesignerPresenter.print()
    }
}
