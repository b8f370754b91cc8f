import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// A counter, which leads to the page of what it counts.
CardButton {
    id: root

    property string value
    property var colors: []
    property string opens
    readonly property bool wide: width >= Theme.px(190)

    Layout.fillHeight: true
    Layout.fillWidth: true
    Layout.preferredWidth: 1 // all of the same width
    Accessible.description: value
    bottomPadding: Theme.s20
    topPadding: Theme.s20

    onClicked: Ui.session.view.page = opens

    contentItem: GridLayout {
        columnSpacing: Theme.s16
        rowSpacing: Theme.s12

        GradientIcon {
            Layout.alignment: Qt.AlignLeft | Qt.AlignVCenter
            colors: root.colors
            name: root.symbol
            size: Theme.px(44)
        }
        ColumnLayout {
            Layout.column: root.wide ? 1 : 0
            Layout.row: root.wide ? 0 : 1
            spacing: 2

            LtrText {
                Layout.fillWidth: true
                Accessible.ignored: true
                code: root.value
                font.pixelSize: Theme.textTitle
                fontSizeMode: Text.HorizontalFit
                minimumPixelSize: Theme.textBody
                weight: Font.Bold
            }
            AppText {
                Layout.fillWidth: true
                Accessible.ignored: true
                color: Theme.gMuted
                font.pixelSize: Theme.textSmall
                text: root.text
                wrapMode: Text.Wrap
            }
        }
    }
}
