import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// What the print service has printed, as large as the window allows.
Sheet {
    id: root

    // Head, foot, margins
    readonly property int frame: Theme.px(100) + 4 * Theme.s20 + 2 * Theme.s16

    icon: "scroll"
    title: "سجل الخدمة"
    wantedWidth: Theme.px(860)

    LogText {
        Layout.fillWidth: true
        Layout.preferredHeight: Math.max(Theme.px(160), (root.parent ? root.parent.height : 0) - 2 * Theme.s32 - root.frame)
        focus: true
        log: Agent.log
    }

    actions: [
        Item {
            Layout.fillWidth: true
        },
        LogCopyButton {
        }
    ]
}
