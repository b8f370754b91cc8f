pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The settings of one printer. There is nothing to confirm: each change is saved by itself, and the foot tells how it went.
Sheet {
    id: root

    // Set once, not bound to the session: it must stay until the sheet has closed (the session uses deleteLater).
    required property ProfilePresenter presenter

    icon: "slider.horizontal.3"
    subtitle: presenter.printerName
    title: "إعدادات الطابعة"

    onAboutToHide: presenter.close()
    onClosed: Ui.session.view.endEditing()
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
            options: root.presenter.protoOptions
            value: root.presenter.__proto

            onChosen: value => root.presenter.__proto = value
        }
        ChoiceRow {
            hint: "بالنقاط في السطر"
            label: "عرض الطباعة"
            options: root.presenter.dotsOptions
            value: root.presenter.__dots

            onChosen: value => root.presenter.__dots = value
        }
        ChoiceRow {
            label: "جودة الصور"
            options: root.presenter.ditherOptions
            value: root.presenter.__dither

            onChosen: value => root.presenter.__dither = value
        }
    }
    Card {
        Layout.fillWidth: true
        icon: "scissors"
        title: "القص والدرج"

        ChoiceRow {
            label: "نوع القص"
            options: root.presenter.cutOptions
            value: root.presenter.__cut

            onChosen: value => root.presenter.__cut = value
        }
        ChoiceRow {
            label: "درج النقد"
            options: root.presenter.pinOptions
            value: root.presenter.__pin

            onChosen: value => root.presenter.__pin = value
        }
    }
    Card {
        Layout.fillWidth: true
        icon: "textformat"
        title: "النص العربي المباشر"

        ChoiceRow {
            label: "ترميز الحروف"
            options: root.presenter.encOptions
            value: root.presenter.__enc

            onChosen: value => root.presenter.__enc = value
        }
        InputRow {
            hint: "أمر ESC t، مثل 50"
            label: "رقم الصفحة"
            placeholder: "50"
            problem: root.presenter.escTProblem
            text: root.presenter.__escT

            onEdited: text => root.presenter.__escT = text
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
            text: root.presenter.__alias

            onEdited: text => root.presenter.__alias = text
        }
        ChoiceRow {
            label: "الدور"
            options: root.presenter.roleOptions
            value: root.presenter.__role

            onChosen: value => root.presenter.__role = value
        }
    }
    ProfileMaintenance {
        actions: root.presenter.actions

        onPressed: action => root.presenter.run(action)
    }

    actions: ProfileFooter {
        color: Theme.named(root.presenter.footerColor)
        icon: root.presenter.footerIcon
        text: root.presenter.footerText
    }
}
