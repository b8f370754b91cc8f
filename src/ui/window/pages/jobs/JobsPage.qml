pragma ComponentBehavior: Bound

import QtQuick
import Zemrak.Kit
import Zemrak.Window

// The recent jobs, newest first.
ListPage {
    id: root

    page: "jobs"
    subtitle: "آخر وظائف الطباعة على هذا الجهاز"

    above: ListSearch {
        found: Ui.session.jobs
        list: root.list
        placeholder: "ابحث في الوظائف"
    }
    list.keyNavigationEnabled: true
    list.spacing: Theme.s8
    model: Ui.session.jobs

    delegate: JobRow {
        width: ListView.view.width
    }
    placeholder: ListEmpty {
        anchors.left: parent.left
        anchors.right: parent.right
        expected: "تظهر الوظائف هنا"
        icon: "tray"
        searching: Ui.session.jobs.searching
        text: "ستظهر هنا كل وظيفة طباعة وحالتها."
        title: "لا توجد وظائف بعد"
    }
}
