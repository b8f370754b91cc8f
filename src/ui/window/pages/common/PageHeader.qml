import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The head of a page: its symbol and title by its identifier, a subtitle, and its actions, which go below where they
// would crowd the title.
GridLayout {
    id: root

    property string page
    property string subtitle
    default property alias actions: end.data
    readonly property real wanted: icon.width + title.implicitWidth + end.implicitWidth + 2 * columnSpacing
    readonly property bool crowded: width > 0 && (wanted > width || end.implicitWidth > width / 2)

    columnSpacing: Theme.s16
    rowSpacing: Theme.s16

    GradientIcon {
        id: icon
        Layout.column: 0
        Layout.row: 0
        colors: Pages.tint(root.page)
        name: Pages.icon(root.page)
        size: Theme.px(48)
    }
    ColumnLayout {
        Layout.column: 1
        Layout.fillWidth: true
        Layout.row: 0
        spacing: 2

        LineText {
            id: title
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
        Layout.column: root.crowded ? 0 : 2
        Layout.columnSpan: root.crowded ? 3 : 1
        Layout.fillWidth: false
        Layout.row: root.crowded ? 1 : 0
        spacing: Theme.s8
    }
}
