import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// One printer. All of the card opens its settings; the test print on it is a button of its own. Of the whole list only
// the chosen card is a stop of the Tab key, and its button the next one.
FocusScope {
    id: root

    required property int index
    required property string printerId
    required property string name
    required property string icon
    required property string detail
    required property string trouble
    required property string troubleColor
    required property string language
    required property string stateText
    required property string stateColor
    required property bool offline
    readonly property bool hover: card.hovered
    readonly property int stops: ListView.isCurrentItem || activeFocus ? Qt.StrongFocus : Qt.ClickFocus
    readonly property bool wide: width >= Theme.px(540)

    signal open()
    signal stepped(int by)

    // By a key, so that the ring is shown.
    function takeFocus(): void {
        card.forceActiveFocus(Qt.TabFocusReason);
        card.focusReason = Qt.TabFocusReason; // also if the list has given it the focus already
    }

    implicitHeight: card.implicitHeight

    onActiveFocusChanged: if (activeFocus && ListView.view)
        ListView.view.currentIndex = index

    Keys.onDownPressed: stepped(1)
    Keys.onUpPressed: stepped(-1)

    CardButton {
        id: card

        readonly property string help: "افتح إعدادات الطابعة"

        Accessible.description: root.detail + (root.language === "" ? "" : "، " + root.language) + "، " + root.stateText + (root.trouble === "" ? "" : "، " + root.trouble) + "، " + help
        anchors.fill: parent
        focus: true
        focusPolicy: root.stops
        fade: root.offline ? Theme.offlineOpacity : 1
        hint: test.hovered ? "" : help
        implicitHeight: grid.implicitHeight + topPadding + bottomPadding
        text: root.name

        onClicked: root.open()

        GridLayout {
            id: grid
            anchors.left: parent.left
            anchors.leftMargin: card.leftPadding
            anchors.right: parent.right
            anchors.rightMargin: card.rightPadding
            anchors.verticalCenter: parent.verticalCenter
            columnSpacing: Theme.s16
            opacity: card.fade
            rowSpacing: Theme.s12

            GradientIcon {
                Layout.alignment: Qt.AlignVCenter
                colors: Pages.tint("printers")
                name: root.icon
            }
            ColumnLayout {
                spacing: Theme.s4

                LineText {
                    Layout.fillWidth: true
                    Accessible.ignored: true
                    value: root.name
                    weight: Font.Bold
                }
                RowLayout {
                    Layout.minimumHeight: Theme.px(22) // with a language or without
                    spacing: Theme.s8

                    LineText {
                        Layout.fillWidth: true
                        Layout.maximumWidth: Math.ceil(implicitWidth)
                        Accessible.ignored: true
                        color: Theme.gMuted
                        font.pixelSize: Theme.textSmall
                        value: root.detail
                    }
                    PrinterLanguage {
                        language: root.language
                        visible: root.language !== ""
                    }
                    Item {
                        Layout.fillWidth: true
                    }
                }
                AppText {
                    Layout.fillWidth: true
                    Accessible.ignored: true
                    color: Theme.readable(Theme.named(root.troubleColor))
                    font.pixelSize: Theme.textSmall
                    text: root.trouble
                    visible: root.trouble !== ""
                    wrapMode: Text.Wrap
                }
            }
            RowLayout {
                Layout.column: root.wide ? 2 : 1
                Layout.fillWidth: false
                Layout.row: root.wide ? 0 : 1
                spacing: Theme.s12

                Badge {
                    Accessible.ignored: true
                    color: Theme.named(root.stateColor)
                    text: root.stateText
                }
                SecondaryButton {
                    id: test
                    Accessible.description: root.name
                    focusPolicy: root.stops
                    text: "طباعة تجربة"

                    onClicked: Ui.session.printers.testPrint(root.printerId)
                }
            }
            Icon {
                Layout.column: 3
                Layout.row: 0
                color: Theme.gMuted
                name: "chevron.left"
                size: Theme.iconSmall
            }
        }
    }
}
