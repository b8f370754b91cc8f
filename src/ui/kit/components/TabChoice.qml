import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// One of the choices of Tabs. It shows `current`; a press alone does not change it.
T.TabButton {
    id: root

    property string symbol
    property bool current: false
    readonly property color ink: current ? Theme.readable(Theme.gPrimary) : Theme.gText

    // The role is the template's, which writes over what is said here of it.
    Accessible.name: text
    Accessible.selected: current
    Accessible.onPressAction: root.clicked()
    autoExclusive: false
    checkable: false

    focusPolicy: current ? Qt.StrongFocus : Qt.ClickFocus
    font.family: Theme.family
    font.pixelSize: Theme.textBody
    font.weight: Font.Medium
    hoverEnabled: true
    implicitHeight: Math.max(Theme.px(36), implicitContentHeight)
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    leftPadding: Theme.s16
    rightPadding: Theme.s16

    Keys.onEnterPressed: root.clicked()
    Keys.onReturnPressed: root.clicked()

    background: ButtonGround {
        color: root.current ? Theme.selected : root.down ? Theme.pressed : root.hovered ? Theme.hover : Theme.gCard
        edge: root.current ? "transparent" : Theme.gBorder
        ringed: root.visualFocus
    }
    contentItem: ButtonContent {
        font: root.font
        ink: root.ink
        symbol: root.symbol
        text: root.text
    }

    HoverHandler {
        cursorShape: Qt.PointingHandCursor
    }
}
