pragma ComponentBehavior: Bound

import QtQuick
import Zemrak.Kit
import Zemrak.Window

// The page of sites as far as it is their rows. Nothing is deleted before it is asked.
ListPage {
    id: root

    listStays: true
    page: "sites"
    subtitle: "المواقع التي يُسمح لها بالطباعة من هذا الجهاز"

    above: ListSearch {
        found: Ui.session.sites.origins
        list: root.list
        placeholder: "ابحث عن موقع"
    }
    list.keyNavigationEnabled: true
    model: Ui.session.sites.origins

    delegate: SiteRow {
        width: ListView.view.width

        onRemoveRequested: {
            question.origin = origin;
            question.open();
        }
    }

    ConfirmDialog {
        id: question

        property string origin

        confirmText: "حذف"
        icon: "trash"
        question: "لن يستطيع \u2066" + origin + "\u2069 الطباعة من هذا الجهاز حتى تضيفه من جديد."
        title: "حذف الموقع؟"

        onConfirmed: Ui.session.sites.remove(origin)
    }
}
