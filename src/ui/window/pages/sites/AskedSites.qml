pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The sites that wanted to print and are not on the list, each with the button that puts it there.
Card {
    id: root

    readonly property int count: sites.count

    icon: "globe"
    title: "مواقع طلبت الطباعة"

    AppText {
        Layout.fillWidth: true
        color: Theme.gMuted
        font.pixelSize: Theme.textSmall
        text: "هذه المواقع ليست في القائمة فلم تطبع شيئًا. اسمح فقط بما تعرفه منها."
        wrapMode: Text.Wrap
    }
    ColumnLayout {
        Accessible.name: root.title
        Accessible.role: Accessible.List
        Layout.fillWidth: true
        spacing: 0

        Repeater {
            id: sites

            model: Ui.session.sites.asked

            ListRow {
                id: site

                required property string origin
                required property string timeText
                required property bool allowing
                required property string problem

                Layout.fillWidth: true
                colors: Theme.amberTile
                icon: "globe"
                ltrTitle: true
                subtitle: problem === "" ? timeText : problem
                subtitleColor: problem === "" ? Theme.gMuted : Theme.readable(Theme.gRed)
                title: origin

                SecondaryButton {
                    Accessible.description: site.origin
                    busy: site.allowing
                    symbol: "checkmark"
                    text: "السماح"

                    onClicked: Ui.session.sites.allow(site.origin)
                }
            }
        }
    }
}
