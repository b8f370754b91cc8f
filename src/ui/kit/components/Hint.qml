import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// A few words that appear beside a control while the pointer rests on it. Put it inside that control.
T.ToolTip {
    id: root

    property bool shown: false

    bottomPadding: Theme.s8
    closePolicy: T.Popup.NoAutoClose
    delay: 600
    leftPadding: Theme.s12
    margins: Theme.s8
    rightPadding: Theme.s12
    topPadding: Theme.s8
    visible: shown && text !== ""
    width: Math.min(implicitWidth, Theme.px(340))
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? parent.height + Theme.s8 : 0

    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    implicitWidth: implicitContentWidth + leftPadding + rightPadding

    background: Rectangle {
        color: Theme.toast
        radius: Theme.radiusSmall
    }
    contentItem: AppText {
        color: Theme.toastInk
        font.pixelSize: Theme.textSmall
        text: root.text
        wrapMode: Text.Wrap
    }
}
