import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

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
            Accessible.description: problem.text
            focus: true
            Layout.fillWidth: true
            faulty: problem.text !== ""
            name: "عنوان الموقع"
            placeholder: "https://pos.example.com"
            readOnly: Ui.session.sites.adding
            text: Ui.session.view.newSite

            onAccepted: Ui.session.sites.add(text)
            onTextEdited: Ui.session.view.newSite = text
        }
        PrimaryButton {
            busy: Ui.session.sites.adding
            enabled: field.text.trim() !== "" && !Ui.session.sites.adding
            symbol: "plus"
            text: "إضافة"

            onClicked: Ui.session.sites.add(field.text)
        }
    }
    FieldProblem {
        id: problem
        text: field.text === Ui.session.sites.refusedText ? Ui.session.sites.refusal : ""
    }
    Connections {
        target: Ui.session.sites

        function onAdded() {
            Ui.session.view.newSite = "";
        }
    }
}
