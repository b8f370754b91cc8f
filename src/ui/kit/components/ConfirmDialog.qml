import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// One question before something is taken away. Escape is "no", and "no" has the keyboard first.
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
