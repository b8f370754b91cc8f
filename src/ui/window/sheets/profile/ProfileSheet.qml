pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The settings of one printer. There is nothing to confirm: each change is saved by itself, and the foot tells how it went.
Sheet {
    id: root

    // Handed over once and never bound to what is open just now: it stays until nothing of the sheet looks at it.
    required property ProfileEditor editor

    icon: "slider.horizontal.3"
    subtitle: editor.printerName
    title: "إعدادات الطابعة"

    onAboutToHide: editor.close()
    onClosed: MainView.endEditing()
    onOpened: {
        language.control.forceActiveFocus(Qt.TabFocusReason);
        contentY = 0;
    }

    Card {
        Layout.fillWidth: true
        icon: "doc.text"
        title: "اللغة والورق"

        ChoiceRow {
            id: language
            hint: "تلقائي يناسب أغلب الطابعات"
            label: "لغة الطابعة"
            options: root.editor.protoOptions
            value: root.editor.__proto

            onChosen: value => root.editor.__proto = value
        }
        ChoiceRow {
            hint: "بالنقاط في السطر"
            label: "عرض الطباعة"
            options: root.editor.dotsOptions
            value: root.editor.__dots

            onChosen: value => root.editor.__dots = value
        }
        ChoiceRow {
            label: "جودة الصور"
            options: root.editor.ditherOptions
            value: root.editor.__dither

            onChosen: value => root.editor.__dither = value
        }
    }
    Card {
        Layout.fillWidth: true
        icon: "scissors"
        title: "القص والدرج"

        ChoiceRow {
            label: "نوع القص"
            options: root.editor.cutOptions
            value: root.editor.__cut

            onChosen: value => root.editor.__cut = value
        }
        ChoiceRow {
            label: "درج النقد"
            options: root.editor.pinOptions
            value: root.editor.__pin

            onChosen: value => root.editor.__pin = value
        }
    }
    Card {
        Layout.fillWidth: true
        icon: "textformat"
        title: "النص العربي المباشر"

        ChoiceRow {
            label: "ترميز الحروف"
            options: root.editor.encOptions
            value: root.editor.__enc

            onChosen: value => root.editor.__enc = value
        }
        InputRow {
            hint: "أمر ESC t، مثل 50"
            label: "رقم الصفحة"
            placeholder: "50"
            text: root.editor.__escT

            onEdited: text => root.editor.__escT = text
        }
    }
    Card {
        Layout.fillWidth: true
        icon: "tag"
        title: "التسمية"

        InputRow {
            hint: "يظهر ويُستخدم بدل اسم الجهاز"
            label: "اسم مستعار"
            placeholder: "كاشير 1"
            text: root.editor.__alias

            onEdited: text => root.editor.__alias = text
        }
        ChoiceRow {
            label: "الدور"
            options: root.editor.roleOptions
            value: root.editor.__role

            onChosen: value => root.editor.__role = value
        }
    }
    ProfileMaintenance {
        actions: root.editor.actions

        onPressed: action => root.editor.run(action)
    }

    actions: ProfileFooter {
        color: Theme.named(root.editor.footerColor)
        icon: root.editor.footerIcon
        text: root.editor.footerText
    }
}
