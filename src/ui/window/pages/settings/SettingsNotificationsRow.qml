import Zemrak.Kit
import Zemrak.Window

// Whether warnings may be shown by the system, and the way to have them shown.
SettingsRow {
    id: root

    readonly property SettingsPresenter settings: Ui.session.settings

    colors: Theme.redTile
    icon: "bell.badge.fill"
    status: settings.notificationStatus
    statusColor: settings.offersNotificationSettings ? Theme.readable(Theme.gAmber) : Theme.gMuted
    title: "إشعارات النظام"

    PrimaryButton {
        text: "السماح بالإشعارات"
        visible: root.settings.offersNotificationRequest

        onClicked: Ui.session.settings.requestNotifications()
    }
    PrimaryButton {
        text: "السماح في إعدادات النظام"
        visible: root.settings.offersNotificationSettings

        onClicked: Ui.session.settings.openNotificationSettings()
    }
    SecondaryButton {
        text: "إرسال إشعار تجريبي"
        visible: root.settings.offersNotificationTest

        onClicked: Ui.session.settings.testNotification()
    }
}
