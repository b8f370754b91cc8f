import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// What the service has printed, in a box of its own; larger on a sheet.
Card {
    icon: "scroll"
    title: "سجل الخدمة"

    trailing: [
        LogCopyButton {
        },
        SecondaryButton {
            symbol: "macwindow"
            text: "عرض أكبر"

            onClicked: Ui.session.view.showLog = true
        }
    ]

    LogText {
        Layout.fillWidth: true
        Layout.preferredHeight: Theme.px(220)
        log: Agent.log
    }
}
