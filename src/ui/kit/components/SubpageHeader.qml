import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// The head of a sub-page or sheet: the way back, symbol, title and subtitle.
RowLayout {
    id: root

    property string title
    property string subtitle
    property string icon
    property bool closes: false // the way back is a cross, at the far end, as in a sheet
    default property alias trailing: end.data

    signal back()

    spacing: Theme.s12

    IconButton {
        symbol: "chevron.right"
        text: "رجوع"
        visible: !root.closes

        onClicked: root.back()
    }
    GradientIcon {
        colors: [Theme.hex6("c084fc"), Theme.hex6("7c3aed")]
        name: root.icon
        size: Theme.tile
        visible: root.icon !== ""
    }
    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2

        LineText {
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
            font.pixelSize: Theme.px(20)
            value: root.title
            weight: Font.Bold
        }
        LineText {
            Layout.fillWidth: true
            color: Theme.gMuted
            font.pixelSize: Theme.textSmall
            value: root.subtitle
            visible: root.subtitle !== ""
        }
    }
    RowLayout {
        id: end
        spacing: Theme.s8
    }
    IconButton {
        symbol: "xmark"
        text: "إغلاق"
        visible: root.closes

        onClicked: root.back()
    }
}
