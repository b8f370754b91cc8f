import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// Whether printing works, what there is, and what the last connection check found out.
ScrollPage {
    OverviewHero {
        Layout.fillWidth: true
    }
    RowLayout {
        spacing: Theme.s20

        OverviewStat {
            colors: Pages.tint("printers")
            opens: "printers"
            symbol: "printer.fill"
            text: "طابعات متصلة"
            value: Ui.session.overview.printersValue
        }
        OverviewStat {
            colors: Pages.tint("sites")
            opens: "sites"
            symbol: "checkmark.shield.fill"
            text: "مواقع مصرّحة"
            value: Ui.session.overview.sitesValue
        }
        OverviewStat {
            colors: Pages.tint("jobs")
            opens: "jobs"
            symbol: "clock.arrow.circlepath"
            text: "وظائف اليوم"
            value: Ui.session.overview.jobsValue
        }
    }
    OverviewScan {
        Layout.fillWidth: true
        visible: Ui.session.overview.showsScan
    }
}
