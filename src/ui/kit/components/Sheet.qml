// qmllint disable deferred-property-id
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import QtQuick.Window
import Zemrak.Kit

// A panel over the window that takes the keyboard until it is closed, by its cross, by Escape, or by close(), and then
// gives it back to what had it. Its content scrolls when it is taller than the window; its footer stays.
T.Dialog {
    id: root

    property string subtitle
    property string icon
    property real wantedWidth: Theme.px(640)
    default property alias content: column.data
    property alias actions: foot.data
    property alias contentY: view.contentY
    property Item focusedBefore

    anchors.centerIn: parent
    closePolicy: T.Popup.CloseOnEscape
    focus: true
    height: Math.min(implicitHeight, parent ? parent.height - 2 * Theme.s32 : implicitHeight)
    implicitHeight: frame.implicitHeight
    modal: true
    parent: T.Overlay.overlay
    width: Math.min(wantedWidth, parent ? parent.width - 2 * Theme.s32 : wantedWidth)

    onAboutToShow: focusedBefore = parent.Window.activeFocusItem
    onClosed: {
        if (focusedBefore)
            focusedBefore.forceActiveFocus(Qt.PopupFocusReason);
    }

    T.Overlay.modal: Rectangle {
        color: Theme.scrim
    }

    background: Rectangle {
        border.color: Theme.gBorder
        border.width: Theme.stroke
        color: Theme.gBg
        radius: Theme.radiusSheet
    }
    contentItem: Item {
        ColumnLayout {
            id: frame
            anchors.fill: parent
            spacing: 0

            SubpageHeader {
                Layout.fillWidth: true
                Layout.margins: Theme.s20
                closes: true
                icon: root.icon
                subtitle: root.subtitle
                title: root.title

                onBack: root.close()
            }
            Divider {
            }
            Flickable {
                id: view
                Layout.fillHeight: true
                Layout.fillWidth: true
                boundsBehavior: Flickable.StopAtBounds
                clip: true
                contentHeight: column.implicitHeight + 2 * Theme.s20
                implicitHeight: contentHeight
                interactive: contentHeight > height

                T.ScrollBar.vertical: AppScrollBar {
                }

                ColumnLayout {
                    id: column
                    spacing: Theme.s16
                    width: view.width - 2 * Theme.s20
                    x: Theme.s20
                    y: Theme.s20
                }
            }
            Divider {
                visible: foot.visible
            }
            RowLayout {
                id: foot
                Layout.fillWidth: true
                Layout.margins: Theme.s16
                spacing: Theme.s8
                visible: children.length > 0
            }
        }
        FocusScroller {
            view: view
        }
    }
    enter: Transition {
        NumberAnimation {
            duration: Theme.quick
            from: 0
            property: "opacity"
            to: 1
        }
    }
    exit: Transition {
        NumberAnimation {
            duration: Theme.quick
            from: 1
            property: "opacity"
            to: 0
        }
    }
}
