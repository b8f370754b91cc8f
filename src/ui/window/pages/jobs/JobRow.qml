import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// One print job: where it went, what it was, how it ended and when. Its identifier can be copied for whoever asks.
RowCard {
    id: root

    required property int index
    required property string jobId
    required property string printerName
    required property string kindText
    required property string statusText
    required property string statusColor
    required property string errorText
    required property string waitingText
    required property string confirmedText
    readonly property string remark: errorText === "" ? waitingText : errorText
    required property string time

    facts: [kindText, statusText, confirmedText, remark, time]
    inset: Theme.s12
    name: printerName === "" ? kindText : printerName
    row: index

    Keys.onPressed: event => {
        if (event.matches(StandardKey.Copy)) {
            Clipboard.copy(jobId);
            event.accepted = true;
        }
    }

    RowLayout {
        spacing: Theme.s12
        width: root.textRoom

        LineText {
            Layout.fillWidth: true
            Accessible.ignored: true
            value: root.name
            weight: Font.Medium
        }
        AppText {
            Accessible.ignored: true
            color: Theme.gMuted
            font.pixelSize: Theme.textSmall
            text: root.confirmedText
            visible: root.confirmedText !== ""
        }
        Badge {
            Accessible.ignored: true
            color: Theme.named(root.statusColor)
            text: root.statusText
        }
    }
    Row {
        spacing: Theme.s8

        AppText {
            id: kind
            Accessible.ignored: true
            color: Theme.gMuted
            font.pixelSize: Theme.textSmall
            lineHeight: 1
            text: "\u200f" + root.kindText + " ·"
            visible: root.printerName !== ""
        }
        SelectableText {
            activeFocusOnTab: root.chosen
            color: Theme.gMuted
            font.pixelSize: Theme.textSmall
            ltr: true
            value: root.jobId
            width: root.textRoom - (kind.visible ? kind.width + Theme.s8 : 0) - moment.width - Theme.s8
        }
        AppText {
            id: moment
            Accessible.ignored: true
            color: Theme.gMuted
            font.pixelSize: Theme.textSmall
            lineHeight: 1
            text: root.time
        }
    }
    AppText {
        Accessible.ignored: true
        color: Theme.readable(root.errorText === "" ? Theme.gAmber : Theme.gRed)
        font.pixelSize: Theme.textSmall
        text: root.remark
        visible: root.remark !== ""
        width: root.textRoom
        wrapMode: Text.Wrap
    }
}
