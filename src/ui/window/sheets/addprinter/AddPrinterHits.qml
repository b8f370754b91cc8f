pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// What one search has found, a row a printer, each with the button that adds it or the reason why it has none.
ColumnLayout {
    id: root

    property alias hits: rows.model
    property bool ltrTitles: false
    property bool ltrDetails: false

    signal add(int row)

    function isolated(text: string): string {
        return text === "" ? "" : "\u2066" + text + "\u2069";
    }

    Accessible.name: "الطابعات التي وُجدت"
    Accessible.role: Accessible.List
    Layout.fillWidth: true
    spacing: 0
    visible: rows.count > 0

    Repeater {
        id: rows

        ListRow {
            id: hit

            required property int index
            required title
            required property string detail
            required property string note
            required property string buttonTitle
            required property bool addable
            required property bool adding
            required property bool added

            Layout.fillWidth: true
            ltrTitle: root.ltrTitles
            subtitle: root.ltrDetails ? root.isolated(detail) : detail

            AppText {
                color: Theme.gMuted
                font.pixelSize: Theme.textSmall
                text: hit.note
                visible: !hit.addable
            }
            // Stays where the keyboard is, also when there is nothing more to press it for.
            SecondaryButton {
                Accessible.description: hit.title
                busy: hit.adding
                opacity: hit.added ? Theme.disabledOpacity : 1
                symbol: hit.added ? "checkmark" : "plus"
                text: hit.buttonTitle
                visible: hit.addable

                onClicked: root.add(hit.index)
            }
        }
    }
}
