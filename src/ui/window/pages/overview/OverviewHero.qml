import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The logo in its ring, and beside it in one sentence whether printing works.
Card {
    id: root

    readonly property bool wide: width >= Theme.px(500)

    Accessible.name: Ui.session.overview.heroTitle

    GridLayout {
        Layout.margins: Theme.s12
        columnSpacing: Theme.s32
        rowSpacing: Theme.s24

        ColumnLayout {
            Layout.alignment: Qt.AlignCenter
            Layout.fillWidth: false
            Layout.preferredWidth: Theme.px(196)
            spacing: Theme.s12

            OverviewRing {
                Layout.alignment: Qt.AlignHCenter
            }
            AppText {
                Layout.fillWidth: true
                Accessible.ignored: true // the ring says it itself
                color: Theme.gMuted
                font.pixelSize: Theme.textSmall
                horizontalAlignment: Text.AlignHCenter
                text: Ui.session.overview.ringHint
                wrapMode: Text.Wrap
            }
        }
        ColumnLayout {
            Layout.column: root.wide ? 1 : 0
            Layout.row: root.wide ? 0 : 1
            spacing: Theme.s8

            AppText {
                Layout.fillWidth: true
                Accessible.role: Accessible.Heading
                font.pixelSize: Theme.textHero
                horizontalAlignment: root.wide ? Text.AlignLeft : Text.AlignHCenter
                lineHeight: 1
                text: Ui.session.overview.heroTitle
                weight: Font.Bold
                wrapMode: Text.Wrap
            }
            AppText {
                Layout.fillWidth: true
                Accessible.name: Ui.session.overview.heroSubtitle
                color: Theme.gMuted
                elide: Text.ElideRight
                font.pixelSize: Theme.textHeadline
                horizontalAlignment: root.wide ? Text.AlignLeft : Text.AlignHCenter
                maximumLineCount: 6
                text: "\u200f" + Ui.session.overview.heroSubtitle.replace(/\s+/g, " ") // may begin with a Latin name
                wrapMode: Text.Wrap
            }
        }
    }
}
