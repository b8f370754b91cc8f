import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// A receipt to try a printer with: the form, and beside it, or under it where there is no room, the paper. What prints
// it is always in sight.
FocusScope {
    id: root

    readonly property bool wide: width >= Theme.px(740)

    ScrollPage {
        id: scroll
        anchors.bottom: bar.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        focus: true
        page: "designer"
        subtitle: "صمّم ورقة تجريبية بالأسعار والمنتجات و QR والباركود، ثم اطبعها على طابعتك"

        actions: [
            SecondaryButton {
                text: "تراجع"
                visible: DesignerPresenter.canUndo

                onClicked: {
                    sample.forceActiveFocus(Qt.OtherFocusReason);
                    DesignerPresenter.undo();
                }
            },
            SecondaryButton {
                id: sample
                text: "بيانات تجريبية"

                onClicked: DesignerPresenter.loadSample()
            },
            SecondaryButton {
                text: "إعادة ضبط"

                onClicked: DesignerPresenter.reset()
            }
        ]

        Item {
            id: area

            readonly property real gap: Theme.s20
            readonly property real start: y + parent.y // in what scrolls

            Layout.fillWidth: true
            implicitHeight: root.wide ? Math.max(form.implicitHeight, Theme.px(420)) : form.implicitHeight + gap + side.implicitHeight

            ColumnLayout {
                id: form
                anchors.left: parent.left
                spacing: area.gap
                width: root.wide ? parent.width - side.width - area.gap : parent.width

                DesignerPrinter {
                    Layout.fillWidth: true
                }
                DesignerHeader {
                    Layout.fillWidth: true
                }
                DesignerItems {
                    Layout.fillWidth: true
                    view: scroll.view
                }
                DesignerCodes {
                    Layout.fillWidth: true
                }
                DesignerFooter {
                    Layout.fillWidth: true
                }
            }
            // Beside the form it stays while that scrolls by.
            ColumnLayout {
                id: side

                readonly property real from: Math.max(area.start, scroll.contentY + Theme.s32)
                readonly property real to: scroll.contentY + scroll.height - Theme.s32

                anchors.right: parent.right
                height: root.wide ? Math.min(to, area.start + area.height) - from : implicitHeight
                spacing: Theme.s16
                width: root.wide ? Math.min(Math.max(Theme.px(320), area.width * 0.4), Theme.px(460)) : parent.width
                y: root.wide ? from - area.start : form.height + area.gap

                DesignerPreview {
                    id: preview
                    Layout.fillHeight: true
                    Layout.fillWidth: true
                    Layout.preferredHeight: root.wide ? Theme.px(200) : Math.min(implicitHeight, scroll.height - 2 * Theme.s32)
                }
                DesignerPrint {
                    visible: root.wide
                }
            }
        }
    }
    Rectangle {
        id: bar
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        color: Theme.gCard
        height: root.wide ? 0 : below.implicitHeight + 2 * Theme.s12
        visible: !root.wide

        Divider {
            width: parent.width
        }
        DesignerPrint {
            id: below
            anchors.left: parent.left
            anchors.leftMargin: Theme.pageMargin(root.width)
            anchors.right: parent.right
            anchors.rightMargin: Theme.pageMargin(root.width)
            anchors.verticalCenter: parent.verticalCenter
            wide: true
        }
    }
}
