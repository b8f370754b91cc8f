import QtQuick
import QtQml.Models
import QtQuick.Window
import Zemrak.Kit
import Zemrak.Window

// The main window: the sidebar at the reading edge, the page beside it, and over both the sheets, the first-run wizard
// and the transient message.
BaseWindow {
    id: root

    height: 760
    minimumHeight: Math.max(560, sidebar.implicitHeight)
    minimumWidth: Math.ceil(Ui.session.view.sidebarWidth) + 560
    title: "Zemrak Printer"
    width: 1020

    Binding {
        property: "winSize"
        restoreMode: Binding.RestoreNone
        target: Ui.session.view
        value: Qt.size(root.width, root.height)
    }
    Item {
        anchors.fill: parent
        enabled: !Ui.session.view.showOnboarding
        visible: !Ui.session.view.showOnboarding

        Sidebar {
            id: sidebar
            anchors.bottom: parent.bottom
            anchors.left: parent.left
            anchors.top: parent.top
            width: Ui.session.view.sidebarWidth
        }
        PageStack {
            anchors.bottom: parent.bottom
            anchors.left: sidebar.right
            anchors.right: parent.right
            anchors.top: parent.top
            focus: true
        }
    }
    Sheets {
    }
    Loader {
        active: Ui.session.view.showOnboarding
        anchors.fill: parent
        focus: active

        sourceComponent: OnboardingView {
            onFinish: Ui.session.view.finishOnboarding()
        }
    }
    ToastOverlay {
        text: Agent.toast
    }

    Instantiator {
        model: Pages

        Shortcut {
            required property string pageId
            required property int index

            autoRepeat: false
            enabled: !Ui.session.view.showOnboarding
            sequences: ["Ctrl+" + (index + 1)]

            onActivated: Ui.session.view.page = pageId
        }
    }
    // Over an open sheet too, which keeps the other shortcuts to itself.
    Shortcut {
        autoRepeat: false
        context: Qt.ApplicationShortcut
        sequences: ["Ctrl+W"]

        onActivated: root.close()
    }
    Shortcut {
        autoRepeat: false
        context: Qt.ApplicationShortcut
        sequences: ["Ctrl+Q"]

        onActivated: Qt.quit()
    }
}
