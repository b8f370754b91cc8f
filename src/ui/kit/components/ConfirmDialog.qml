import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// Asks before something is deleted. Escape cancels, and the cancel button has the focus at first.
Sheet {
    id: root

    property string question
    property string confirmText

    signal confirmed()

    wantedWidth: Theme.px(440)

    onOpened: refuse.forceActiveFocus(Qt.TabFocusReason)

    AppText {
        Layout.fillWidth: true
        text: root.question
        wrapMode: Text.Wrap
    }

    actions: [
        Item {
            Layout.fillWidth: true
        },
        SecondaryButton {
            id: refuse
            text: "إلغاء"

            onClicked: root.close()
        },
        DangerButton {
            filled: true
            text: root.confirmText

            onClicked: {
                root.close();
                root.confirmed();
            }
        }
    ]
}
