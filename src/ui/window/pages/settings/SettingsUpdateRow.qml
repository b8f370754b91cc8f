import Zemrak.Kit
import Zemrak.Window

// The version, and a newer one once it is known.
SettingsRow {
    id: root

    readonly property SettingsPresenter settings: Ui.session.settings

    colors: settings.offersInstall ? Theme.purpleTile : Theme.grayTile
    icon: "arrow.down.circle.fill"
    status: settings.updateStatus
    title: settings.versionTitle

    SecondaryButton {
        text: "التحقق من التحديثات"

        onClicked: Ui.session.settings.checkUpdate()
    }
    PrimaryButton {
        busy: root.settings.updating
        enabled: !root.settings.updating
        text: "تثبيت"
        visible: root.settings.offersInstall

        onClicked: Ui.session.settings.installUpdate()
    }
}
