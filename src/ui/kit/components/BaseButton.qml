import QtQuick
import QtQuick.Templates as T
import Zemrak.Kit

// What every button shares: keyboard, focus ring, name and press for assistive technology, symbol before words.
T.AbstractButton {
    id: root

    property string symbol
    property bool busy: false
    property color ink: Theme.gText
    property color ground: "transparent"
    property color edge: "transparent"
    property string hint

    Accessible.description: hint
    Accessible.name: text
    Accessible.role: Accessible.Button
    Accessible.onPressAction: if (root.enabled) root.clicked()

    focusPolicy: Qt.StrongFocus
    font.family: Theme.family
    font.pixelSize: Theme.textBody
    font.weight: Font.Medium
    hoverEnabled: true
    implicitHeight: Math.max(Theme.controlHeight, implicitContentHeight + topPadding + bottomPadding)
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    leftPadding: Theme.s16
    opacity: enabled ? 1 : Theme.disabledOpacity
    rightPadding: Theme.s16

    Keys.onEnterPressed: root.clicked()
    Keys.onReturnPressed: root.clicked()

    background: ButtonGround {
        color: root.ground
        edge: root.edge
        ringed: root.visualFocus
    }
    contentItem: ButtonContent {
        busy: root.busy
        font: root.font
        ink: root.ink
        symbol: root.symbol
        text: root.text
    }

    HoverHandler {
        cursorShape: root.enabled ? Qt.PointingHandCursor : Qt.ArrowCursor
    }
    Hint {
        shown: root.hovered && root.hint !== ""
        text: root.hint
    }
}
