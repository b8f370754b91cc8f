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
    minimumWidth: Math.ceil(MainView.sidebarWidth) + 560
    title: "Zemrak Printer"
    width: 1020

    Binding {
        property: "winSize"
        restoreMode: Binding.RestoreNone
        target: MainView
        value: Qt.size(root.width, root.height)
    }
    Item {
        anchors.fill: parent
        enabled: !MainView.showOnboarding
        visible: !MainView.showOnboarding

        Sidebar {
            id: sidebar
            anchors.bottom: parent.bottom
            anchors.left: parent.left
            anchors.top: parent.top
            width: MainView.sidebarWidth
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
        active: MainView.showOnboarding
        anchors.fill: parent
        focus: active

        sourceComponent: OnboardingView {
            onFinish: MainView.finishOnboarding()
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
            enabled: !MainView.showOnboarding
            sequences: ["Ctrl+" + (index + 1)]

            onActivated: MainView.page = pageId
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
