pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// The one-off commands to the printer, and what they are good for.
Card {
    id: root

    property var actions: [] // { action: ..., title: "...", question: "..." }

    signal pressed(string action)

    Layout.fillWidth: true
    icon: "wrench.and.screwdriver"
    title: "اختبارات وصيانة"

    Flow {
        Layout.fillWidth: true
        spacing: Theme.s8

        Repeater {
            model: root.actions

            SecondaryButton {
                required property var modelData
                readonly property bool destroys: modelData.question !== ""

                ink: destroys ? Theme.readable(Theme.gRed) : Theme.gText
                symbol: destroys ? "trash" : ""
                text: modelData.title

                onClicked: {
                    if (destroys)
                        dialog.ask(modelData);
                    else
                        root.pressed(modelData.action);
                }
            }
        }
    }
    AppText {
        Layout.fillWidth: true
        color: Theme.gMuted
        font.pixelSize: Theme.textSmall
        text: "«فتح الدرج» و«قص تجريبي» لتأكد أن الأوامر مناسبة لطابعتك. «صفحات الأكواد» تطبع سطرًا لكل رقم صفحة (0 إلى 63): اختر الرقم الذي تظهر عنده العربية صحيحة وضعه في «رقم الصفحة» أعلاه. «مسح الوظائف العالقة» يزيل أي وظيفة متوقفة تعطّل ما بعدها في طابور النظام."
        wrapMode: Text.Wrap
    }
    ConfirmDialog {
        id: dialog

        property var asked: ({})

        function ask(action: var): void {
            asked = action;
            open();
        }

        confirmText: "مسح"
        icon: "trash"
        question: asked.question ?? ""
        title: asked.title ? asked.title + "؟" : ""

        onConfirmed: root.pressed(asked.action)
    }
}
