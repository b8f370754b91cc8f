import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// That a search is under way, what it came to, and what to do next.
ColumnLayout {
    id: root

    property bool scanning: false
    property string hint
    property string outcome

    Layout.fillWidth: true
    spacing: Theme.s12
    visible: hint !== "" || outcome !== ""

    Note {
        Layout.fillWidth: true
        color: Theme.gAmber
        icon: "exclamationmark.triangle.fill"
        text: root.outcome
        visible: root.outcome !== ""
    }
    RowLayout {
        spacing: Theme.s8
        visible: root.hint !== ""

        Spinner {
            visible: root.scanning
        }
        AppText {
            Layout.fillWidth: true
            color: Theme.gMuted
            text: root.hint
            wrapMode: Text.Wrap
        }
    }
}
