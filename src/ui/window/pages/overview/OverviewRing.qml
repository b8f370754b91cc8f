import QtQuick
import QtQuick.Window
import Zemrak.Kit
import Zemrak.Window

// The logo in a ring whose colour says whether printing works. A press checks the connection; while a check runs the
// ring fills as far as it has come.
BaseButton {
    id: root

    readonly property color tone: Theme.named(Ui.session.overview.heroColor)
    readonly property real size: (Theme.px(108) + 64) * Ui.session.view.ringScale
    readonly property real band: Math.round(size * 0.045)
    readonly property real logoSize: Math.round(size * 0.72)
    property color shade: tone

    Accessible.description: Ui.session.overview.ringHint
    bottomPadding: 0
    implicitHeight: size
    implicitWidth: size
    leftPadding: 0
    rightPadding: 0
    scale: down ? 0.98 : 1
    text: "فحص الاتصال"
    topPadding: 0

    Behavior on scale {
        NumberAnimation {
            duration: Theme.quick
        }
    }
    Behavior on shade {
        ColorAnimation {
            duration: Theme.gentle
        }
    }

    onClicked: Ui.session.printers.runScan()
    onHoveredChanged: Ui.session.view.hoverRing = hovered

    background: Rectangle {
        color: Theme.tint(root.shade, Ui.session.view.hoverRing ? 0.20 : 0.12)
        radius: root.size / 2

        Rectangle {
            anchors.fill: parent
            anchors.margins: root.band
            border.color: Agent.scanning ? Theme.tint(root.shade, 0.25) : root.shade
            border.width: root.band
            color: Theme.gCard
            radius: width / 2
        }
        Loader {
            active: Agent.scanning
            anchors.fill: parent
            anchors.margins: root.band

            sourceComponent: OverviewProgress {
                band: root.band
                color: root.shade
                progress: Agent.scanProgress
            }
        }
        FocusRing {
            around: root.size / 2
            shown: root.visualFocus
        }
    }
    contentItem: Item {
        Image {
            anchors.centerIn: parent
            height: root.logoSize
            source: "qrc:/zemrak/logo-circle.png"
            sourceSize.height: root.logoSize * Screen.devicePixelRatio
            sourceSize.width: root.logoSize * Screen.devicePixelRatio
            width: root.logoSize
        }
        Rectangle {
            anchors.centerIn: parent
            color: Theme.tint(Theme.toast, 0.88)
            height: root.logoSize
            opacity: Ui.session.view.hoverRing ? 1 : 0
            radius: width / 2
            visible: opacity > 0
            width: root.logoSize

            Behavior on opacity {
                NumberAnimation {
                    duration: Theme.quick
                }
            }

            AppText {
                Accessible.ignored: true
                anchors.fill: parent
                anchors.margins: Theme.s12
                color: Theme.toastInk
                font.pixelSize: Theme.textSmall
                horizontalAlignment: Text.AlignHCenter
                text: Ui.session.overview.ringHoverHint
                weight: Font.Medium
                wrapMode: Text.Wrap
            }
        }
    }
}
