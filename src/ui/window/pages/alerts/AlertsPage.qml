import QtQuick
import QtQuick.Window
import Zemrak.Kit
import Zemrak.Window

// What needs attention now, and under it what did before. Who looks at it for a moment has read it. A list takes its
// header and section heads from unbound components only.
ListPage {
    id: root

    readonly property bool looked: visible && Window.visibility !== Window.Hidden && Window.visibility !== Window.Minimized

    listStays: true
    page: "alerts"
    subtitle: "التحذيرات والمشاكل التي تحتاج انتباهك، مع سجل ما حدث"

    Component.onDestruction: Ui.session.alerts.pageHidden()
    onLookedChanged: {
        if (looked)
            Ui.session.alerts.pageShown();
        else
            Ui.session.alerts.pageHidden();
    }

    actions: [
        SecondaryButton {
            symbol: "checkmark"
            text: "تحديد الكل كمقروء"

            onClicked: Ui.session.alerts.markAllRead()
        },
        SecondaryButton {
            symbol: "trash"
            text: "مسح السجل"

            onClicked: Ui.session.alerts.clearHistory()
        }
    ]
    list.header: ListHead {
        shown: Ui.session.alerts.alerts.activeCount === 0

        EmptyHint {
            color: Theme.gGreen
            icon: "checkmark.seal.fill"
            text: "إذا انقطعت طابعة أو فشلت طباعة سيظهر التحذير هنا ويصلك إشعار على الجهاز."
            title: "لا توجد مشاكل الآن"
            width: parent.width
        }
    }
    list.keyNavigationEnabled: true
    list.section.property: "section"
    list.section.delegate: AlertHeading {
        width: ListView.view.width
    }
    list.spacing: Theme.s8
    model: Ui.session.alerts.alerts

    delegate: AlertRow {
        width: ListView.view.width
    }

    Connections {
        target: Ui.session.alerts

        function onPageRequested(page: string) {
            Ui.session.view.page = page;
        }
    }
}
