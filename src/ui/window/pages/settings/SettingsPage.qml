import QtQuick
import QtQuick.Layouts
import QtQuick.Window
import Zemrak.Kit
import Zemrak.Window

// Every switch of the host integration, what is done for maintenance, and the service's log.
ScrollPage {
    id: root

    readonly property SettingsPresenter settings: Ui.session.settings
    readonly property bool seen: visible && Window.active

    page: "settings"
    subtitle: "التشغيل التلقائي والأمان والصيانة"

    // The person may come back from the system's settings.
    onSeenChanged: if (seen)
        Ui.session.view.appear()

    ColumnLayout {
        Layout.fillWidth: true
        spacing: Theme.s12

        SettingsLoginRow {
        }
        SettingsNotificationsRow {
        }
        SettingsRow {
            colors: Theme.amberTile
            icon: "wifi"
            status: "لازم لطابعات الواي فاي والشبكة؛ إن ظهرت «لا مسار للوصول» فتأكد أنه مفعّل"
            title: "إذن الشبكة المحلية"

            SecondaryButton {
                text: "فتح إعدادات النظام"

                onClicked: Ui.session.settings.openLocalNetworkSettings()
            }
        }
        SettingsRow {
            id: awake
            colors: Theme.purpleTile
            icon: "moon.zzz.fill"
            status: "إن نام جهاز الكاشير لا تصل أوامر الطباعة؛ فعّله إن كان هذا الجهاز مخصصًا للكاشير"
            title: "إبقاء الجهاز مستيقظًا"

            Toggle {
                on: root.settings.keepAwake
                text: awake.title

                onToggleRequested: value => Ui.session.settings.setKeepAwake(value)
            }
        }
        SettingsRow {
            id: approve
            colors: Theme.greenTile
            icon: "checkmark.shield"
            status: "بدون نافذة اقتران؛ مفيد لـ Firefox والنوافذ الخاصة التي تمسح بياناتها (غير مفعّل افتراضيًا)"
            title: "الموافقة التلقائية على المواقع المسموحة"

            Toggle {
                enabled: root.settings.serviceAnswers
                on: root.settings.autoApprove
                text: approve.title

                onToggleRequested: value => Ui.session.settings.setAutoApprove(value)
            }
        }
        SettingsRow {
            colors: Theme.blueTile
            icon: "safari"
            status: root.settings.trustStatus
            title: "تفعيل HTTPS لمتصفح Safari"

            SecondaryButton {
                text: root.settings.caTrusted ? "إعادة التفعيل" : "تفعيل"

                onClicked: Ui.session.settings.trustForSafari()
            }
        }
        SettingsRow {
            colors: Theme.purpleTile
            icon: "wand.and.stars"
            status: "التشغيل مع الجهاز، دعم Safari، الشبكة المحلية"
            title: "معالج الإعداد الأولي"

            SecondaryButton {
                text: "فتح المعالج"

                onClicked: Ui.session.view.showOnboarding = true
            }
        }
        SettingsRow {
            colors: Theme.grayTile
            icon: "arrow.clockwise"
            status: "إن توقفت الطباعة أو تغيّرت الطابعات"
            title: "إعادة تشغيل الخدمة"

            SecondaryButton {
                text: "إعادة التشغيل"

                onClicked: Ui.session.settings.restartService()
            }
        }
        SettingsRow {
            colors: Theme.grayTile
            icon: "stethoscope"
            status: "ملف للدعم الفني بدون رموز أو بيانات عملاء"
            title: "تقرير التشخيص"

            SecondaryButton {
                text: "حفظ التقرير"

                onClicked: Ui.session.settings.exportDiagnostics()
            }
        }
        SettingsUpdateRow {
        }
    }
    SettingsLog {
        Layout.fillWidth: true
    }
}
