import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// The field that allows another site. What is typed stays until the service has taken it.
Card {
    id: root

    function takeFocus(): void {
        field.forceActiveFocus(Qt.ShortcutFocusReason);
    }

    icon: "plus.circle.fill"
    title: "إضافة موقع يدويًا"

    AppText {
        Layout.fillWidth: true
        color: Theme.gMuted
        font.pixelSize: Theme.textSmall
        text: "يُضاف النطاق إلى القائمة المسموحة فورًا (بدون إعادة تشغيل). عند أول طباعة من الموقع تظهر نافذة موافقة مرة واحدة على هذا الجهاز. المسموح: مواقع https، وlocalhost للتطوير."
        wrapMode: Text.Wrap
    }
    RowLayout {
        spacing: Theme.s12

        Input {
            id: field
            focus: true
            Layout.fillWidth: true
            name: "عنوان الموقع"
            placeholder: "https://pos.example.com"
            readOnly: Presenters.sites.adding
            text: MainView.newSite

            onAccepted: Presenters.sites.add(text)
            onTextEdited: MainView.newSite = text
        }
        PrimaryButton {
            busy: Presenters.sites.adding
            enabled: field.text.trim() !== "" && !Presenters.sites.adding
            symbol: "plus"
            text: "إضافة"

            onClicked: Presenters.sites.add(field.text)
        }
    }
    Connections {
        target: Presenters.sites

        function onAdded() {
            MainView.newSite = "";
        }
    }
}
