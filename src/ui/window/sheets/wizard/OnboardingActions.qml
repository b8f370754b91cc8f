import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The wizard's buttons. While an answer is awaited, the sign of that stands in place of the first one.
FocusScope {
    id: root

    property var info: ({}) // the step; empty at the end
    property string last // the button of the end; empty before it
    property bool busy: false
    property bool compact: false // side by side

    signal goOn()
    signal skip()

    // Focuses the button that Return is meant for, never the skip button.
    function takeFocus(): void {
        if (busy)
            waiting.forceActiveFocus(Qt.TabFocusReason);
        else
            allow.forceActiveFocus(Qt.TabFocusReason);
    }

    implicitHeight: compact ? first.implicitHeight : first.implicitHeight + Theme.s8 + Theme.controlHeight

    onBusyChanged: takeFocus()

    GridLayout {
        anchors.left: parent.left
        anchors.right: parent.right
        columnSpacing: Theme.s16
        columns: root.compact ? 2 : 1
        rowSpacing: Theme.s8

        Item {
            id: first
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            implicitHeight: allow.implicitHeight

            OnboardingButton {
                id: allow
                anchors.fill: parent
                Accessible.description: [root.info.title, root.info.text, root.info.note].filter(words => words).join(" ")
                strong: true
                text: root.last !== "" ? root.last : root.info.allow ?? ""
                visible: !root.busy

                onClicked: root.goOn()
            }
            RowLayout {
                id: waiting
                anchors.centerIn: parent
                Accessible.name: words.value
                Accessible.role: Accessible.AlertMessage
                spacing: Theme.s12
                visible: root.busy

                Spinner {
                    color: Theme.onFill
                    size: Theme.iconLarge
                }
                LineText {
                    id: words
                    Accessible.ignored: true
                    color: Theme.onFill
                    font.pixelSize: Theme.textHeadline
                    value: root.info.waiting ?? ""
                    weight: Font.Medium
                }
            }
        }
        OnboardingButton {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            edge: Theme.tint(Theme.onFill, root.compact ? 0.24 : 0)
            implicitHeight: root.compact ? first.implicitHeight : Theme.controlHeight
            text: root.info.skip ?? ""
            visible: root.last === ""

            onClicked: root.skip()
        }
    }
}
