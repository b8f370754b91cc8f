import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The start with the computer, and what helps when it does not work.
SettingsRow {
    id: root

    readonly property SettingsPresenter settings: Ui.session.settings

    colors: Theme.greenTile
    icon: "power"
    status: settings.loginStatus
    statusColor: settings.offersLoginSettings ? Theme.readable(Theme.gAmber) : Theme.gMuted
    title: "التشغيل عند بدء تشغيل الجهاز"

    Toggle {
        on: root.settings.launchAtLogin
        text: root.title

        onToggleRequested: value => Ui.session.settings.setLaunchAtLogin(value)
    }

    more: [
        PrimaryButton {
            text: "السماح في إعدادات النظام"
            visible: root.settings.offersLoginSettings

            onClicked: Ui.session.settings.openLoginSettings()
        },
        Divider {
        },
        RowLayout {
            spacing: Theme.s16

            AppText {
                Layout.fillWidth: true
                color: Theme.gMuted
                font.pixelSize: Theme.textSmall
                text: "إن لم يعمل البرنامج بعد إعادة التشغيل"
                wrapMode: Text.Wrap
            }
            SecondaryButton {
                text: "إعادة تسجيل"

                onClicked: Ui.session.settings.reRegisterLogin()
            }
        }
    ]
}
