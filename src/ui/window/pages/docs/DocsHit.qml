import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// A place that the search has found; a press goes there.
CardButton {
    id: root

    required property int index
    required property string tabTitle
    required property string tabIcon
    required property string excerpt

    text: excerpt === "" ? tabTitle : tabTitle + ": " + excerpt

    contentItem: RowLayout {
        spacing: Theme.s12

        Icon {
            Layout.alignment: Qt.AlignTop
            color: Theme.gPrimary
            name: root.tabIcon
        }
        ColumnLayout {
            spacing: Theme.s4

            LineText {
                Layout.fillWidth: true
                Accessible.ignored: true
                color: root.excerpt === "" ? Theme.gText : Theme.gMuted
                font.pixelSize: root.excerpt === "" ? Theme.textBody : Theme.textSmall
                value: root.tabTitle
                weight: Font.Medium
            }
            AppText {
                Layout.fillWidth: true
                Accessible.ignored: true
                elide: Text.ElideRight
                maximumLineCount: 2
                text: root.excerpt
                visible: root.excerpt !== ""
                wrapMode: Text.Wrap
            }
        }
        Icon {
            color: Theme.gMuted
            name: "chevron.left"
            size: Theme.iconSmall
        }
    }

    onClicked: Ui.session.docs.choose(index)
}
