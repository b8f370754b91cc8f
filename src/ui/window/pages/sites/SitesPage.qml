import QtQuick
import Zemrak.Kit
import Zemrak.Window

// The sites that may print, and under them the field that adds one. A list takes its header and footer from unbound
// components only, so these stand apart from its rows.
SiteList {
    id: root

    actions: SecondaryButton {
        symbol: "plus"
        text: "إضافة موقع"
        visible: root.list.contentHeight > root.list.height // the field may be out of sight

        onClicked: {
            root.list.positionViewAtEnd();
            root.list.footerItem.forceActiveFocus(Qt.ShortcutFocusReason);
        }
    }
    list.footer: FocusScope {
        implicitHeight: add.implicitHeight + add.y
        width: ListView.view.width

        SiteAdd {
            id: add
            width: parent.width
            y: Theme.s12
        }
    }
    list.header: ListHead {
        id: head

        readonly property bool hasAsked: asked.count > 0
        readonly property bool isEmpty: Ui.session.sites.origins.count === 0

        shown: hasAsked || isEmpty

        AskedSites {
            id: asked

            visible: head.hasAsked
            width: parent.width
        }
        Item {
            height: Theme.s12
            visible: head.hasAsked
            width: parent.width
        }
        ListEmpty {
            expected: "تظهر المواقع هنا"
            icon: "globe"
            searching: Ui.session.sites.origins.searching
            title: "لا توجد مواقع مسموحة."
            visible: head.isEmpty
            width: parent.width
        }
    }
}
