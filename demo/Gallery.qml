import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Every component in its states. Hover and focus are there to be tried; what can be held still is shown.
BaseWindow {
    id: root

    readonly property string longText: "طابعة الكاشير الرئيسي في الفرع الجديد بجانب المدخل الشرقي EPSON_TM-T88VI للمجمع التجاري الكبير قرب المواقف"
    readonly property var violet: [Theme.hex6("c084fc"), Theme.hex6("7c3aed")]
    readonly property var green: [Theme.hex6("4ade80"), Theme.hex6("16a34a")]

    height: Theme.px(2120) + 500
    title: "Zemrak gallery"
    width: 1020

    component Swatch: ColumnLayout {
        required property string name
        required property color shade

        spacing: Theme.s4

        Rectangle {
            border.color: Theme.gBorder
            border.width: Theme.stroke
            color: parent.shade
            implicitHeight: 40
            implicitWidth: Theme.px(84)
            radius: Theme.radiusControl
        }
        LtrText {
            code: parent.name
            font.pixelSize: Theme.textCaption
        }
    }
    component Buttons: Flow {
        Layout.fillWidth: true
        spacing: Theme.s12
    }

    ScrollPage {
        anchors.fill: parent
        objectName: "gallery"
        page: "designer"
        subtitle: "كل المكوّنات في حالاتها، على مقياس واحد للخط والمسافات"

        actions: [
            SecondaryButton {
                text: "إجراء"
            },
            PrimaryButton {
                symbol: "plus"
                text: "إضافة"
            }
        ]

        Card {
            Layout.fillWidth: true
            icon: "sparkles"
            title: "الألوان والخط"

            Buttons {
                Swatch { name: "gPrimary"; shade: Theme.gPrimary }
                Swatch { name: "gBg"; shade: Theme.gBg }
                Swatch { name: "gCard"; shade: Theme.gCard }
                Swatch { name: "gBorder"; shade: Theme.gBorder }
                Swatch { name: "gMuted"; shade: Theme.gMuted }
                Swatch { name: "gText"; shade: Theme.gText }
                Swatch { name: "gGreen"; shade: Theme.gGreen }
                Swatch { name: "gRed"; shade: Theme.gRed }
                Swatch { name: "gAmber"; shade: Theme.gAmber }
            }
            AppText { font.pixelSize: Theme.textHero; text: "كل شيء جاهز للطباعة 30"; weight: Font.Bold }
            AppText { font.pixelSize: Theme.textTitle; text: "عنوان الصفحة 24"; weight: Font.Bold }
            AppText { font.pixelSize: Theme.textHeadline; text: "عنوان البطاقة 17"; weight: Font.Bold }
            AppText { text: "نص المتن 15 مع Latin وأرقام 12345" }
            AppText { color: Theme.gMuted; font.pixelSize: Theme.textSmall; text: "نص ثانوي 13" }
            LineText { Layout.fillWidth: true; objectName: "long"; value: root.longText }
            LtrText { Layout.fillWidth: true; code: "https://pos.shop.example:3000" }
            SelectableText { Layout.fillWidth: true; ltr: true; value: "job-1042 192.168.1.50" }
        }
        Card {
            Layout.fillWidth: true
            icon: "power"
            title: "الأزرار"

            Buttons {
                PrimaryButton { objectName: "primary"; text: "فحص الاتصال" }
                PrimaryButton { down: true; text: "مضغوط" }
                PrimaryButton { enabled: false; text: "معطّل" }
                PrimaryButton { busy: true; text: "جارٍ الإرسال…" }
                PrimaryButton { filled: false; symbol: "magnifyingglass"; text: "بحث" }
                PrimaryButton { enabled: false; filled: false; text: "معطّل" }
            }
            Buttons {
                SecondaryButton { symbol: "arrow.clockwise"; text: "إعادة التشغيل" }
                SecondaryButton { down: true; text: "مضغوط" }
                SecondaryButton { enabled: false; text: "معطّل" }
                DangerButton { symbol: "trash"; text: "حذف الموقع" }
                DangerButton { filled: true; text: "حذف" }
                DangerButton { enabled: false; text: "معطّل" }
                IconButton { symbol: "trash"; text: "حذف" }
                IconButton { symbol: "chevron.left"; text: "افتح" }
                IconButton { enabled: false; symbol: "xmark"; text: "إغلاق" }
            }
            SecondaryButton { Layout.maximumWidth: 300; Layout.fillWidth: true; objectName: "long"; text: root.longText }
        }
        Card {
            Layout.fillWidth: true
            icon: "slider.horizontal.3"
            title: "النماذج"

            FieldRow {
                Layout.fillWidth: true
                hint: "تلقائي يناسب أغلب الطابعات"
                label: "لغة الطابعة"

                Select {
                    name: "لغة الطابعة"
                    objectName: "select"
                    options: [{ "value": "auto", "label": "تلقائي" }, { "value": "escpos", "label": "ESC/POS" }, { "value": "none", "label": "طابعة عادية (A4 / ملصقات)" }]
                    value: "auto"
                }
            }
            FieldRow {
                Layout.fillWidth: true
                label: "معطّل"

                Select { enabled: false; name: "معطّل"; options: [{ "value": 0, "label": "تلقائي" }]; value: 0 }
            }
            FieldRow {
                Layout.fillWidth: true
                hint: "يظهر ويُستخدم بدل اسم الجهاز"
                label: "اسم مستعار"

                Input { objectName: "input"; placeholder: "كاشير 1" }
                Input { faulty: true; name: "خطأ"; text: "كاشير/1" }
            }
            FieldRow {
                Layout.fillWidth: true
                label: "عنوان IP"

                Input { placeholder: "192.168.1.50" }
                Input { enabled: false; placeholder: "معطّل" }
            }
            SearchField { Layout.fillWidth: true; objectName: "search"; placeholder: "ابحث عن طابعة" }
            Buttons {
                Toggle { objectName: "toggle"; text: "مفتاح" }
                Toggle { on: true; text: "مفتاح" }
                Toggle { enabled: false; on: true; text: "مفتاح" }
                CheckRow { objectName: "check"; text: "قص الورقة بعد الطباعة" }
                CheckRow { on: true; text: "صفير بعد الطباعة" }
                CheckRow { enabled: false; text: "معطّل" }
            }
            Tabs {
                Layout.fillWidth: true
                objectName: "tabs"
                options: [{ "value": "net", "label": "شبكة (LAN / Wi-Fi)", "icon": "wifi" }, { "value": "usb", "label": "USB", "icon": "cable.connector" }, { "value": "bt", "label": "بلوتوث", "icon": "wave.3.right" }]
                value: "net"
            }
        }
        Card {
            Layout.fillWidth: true
            icon: "checkmark.seal.fill"
            title: "الحالات والصفوف"

            trailing: Badge {
                color: Theme.gGreen
                text: "جاهزة"
            }

            Buttons {
                Badge { color: Theme.gGreen; text: "جاهزة" }
                Badge { color: Theme.gRed; text: "غير متصلة" }
                Badge { color: Theme.gAmber; text: "مشغولة" }
                Badge { text: "غير معروفة" }
                Badge { color: Theme.hex6("c084fc"); text: "أُضيف يدويًا" }
                CountBadge { count: 3 }
                CountBadge { count: 128 }
                Spinner { }
                ProgressLine { value: 0.4; width: 200 }
            }
            ListRow {
                Layout.fillWidth: true
                colors: root.violet
                icon: "moon.zzz.fill"
                subtitle: "إن نام جهاز الكاشير لا تصل أوامر الطباعة"
                title: "إبقاء الجهاز مستيقظًا"

                Toggle { on: true; text: "إبقاء الجهاز مستيقظًا" }
            }
            Divider { }
            ListRow {
                Layout.fillWidth: true
                colors: root.green
                icon: "globe"
                ltrTitle: true
                objectName: "longRow"
                subtitle: "بانتظار أول طباعة"
                subtitleColor: Theme.gAmber
                title: "https://orders.a-very-long-name-of-a-shop.branch-number-seventeen.example.com:8443"

                SecondaryButton { text: "إلغاء الاقتران" }
                IconButton { symbol: "trash"; text: "حذف الموقع" }
            }
            Note { Layout.fillWidth: true; text: "كل تغيير يُطبَّق فورًا بدون زر حفظ" }
            Note { Layout.fillWidth: true; color: Theme.gAmber; icon: "exclamationmark.triangle.fill"; text: root.longText + ". " + root.longText }
        }
        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.s20

            Card {
                Layout.fillHeight: true
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                icon: "tray"
                title: "فارغ"

                EmptyHint {
                    Layout.fillWidth: true
                    icon: "tray"
                    text: "ستظهر هنا كل وظيفة طباعة وحالتها."
                    title: "لا توجد وظائف بعد"
                }
            }
            Card {
                Layout.fillHeight: true
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                icon: "wrench.and.screwdriver"
                title: "رأس صفحة فرعية"

                SubpageHeader {
                    Layout.fillWidth: true
                    icon: "plus.circle.fill"
                    subtitle: "واي فاي / شبكة"
                    title: "إضافة طابعة"
                }
                Glass {
                    Layout.fillWidth: true
                    implicitHeight: Theme.px(56)

                    AppText { anchors.centerIn: parent; text: "زجاج" }
                }
                LogText { Layout.fillWidth: true; log: "listening on 127.0.0.1:17731\nlistening on 127.0.0.1:17732" }
                LogText { Layout.fillWidth: true }
            }
        }
    }
    ConfirmDialog {
        objectName: "confirm"
        confirmText: "حذف"
        question: "لن يستطيع هذا الموقع الطباعة بعد الآن."
        title: "حذف الموقع؟"
    }
}
