import QtQuick
import QtQuick.Layouts
import Zemrak

// The head of a page: its symbol and title by its identifier, a subtitle, and its actions.
RowLayout {
    id: root

    property string page
    property string subtitle
    default property alias actions: end.data

    spacing: Theme.s16

    GradientIcon {
        colors: Pages.tint(root.page)
        name: Pages.icon(root.page)
        size: Theme.px(48)
    }
    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2

        LineText {
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
            font.pixelSize: Theme.textTitle
            value: Pages.title(root.page)
            weight: Font.Bold
        }
        AppText {
            Layout.fillWidth: true
            color: Theme.gMuted
            text: root.subtitle
            visible: root.subtitle !== ""
            wrapMode: Text.Wrap
        }
    }
    RowLayout {
        id: end
        spacing: Theme.s8
    }
}
