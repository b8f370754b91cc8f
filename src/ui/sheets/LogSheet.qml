import QtQuick
import QtQuick.Layouts
import Zemrak

// What the print service has printed.
Sheet {
    icon: "scroll"
    title: "سجل الخدمة"
    wantedWidth: Theme.px(760)

    LogText {
        Layout.fillWidth: true
        log: Agent.log
    }
}
