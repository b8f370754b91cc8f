pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Zemrak.Kit
import Zemrak.Window

// The first-run wizard, over the whole window: one page a step, the buttons always at the same place. Return goes on.
FocusScope {
    id: root

    readonly property WizardPresenter wizard: Ui.session.wizard // null while this view comes and while it goes
    readonly property var end: wizard ? wizard.summaryPage : ({})
    property bool built: false
    readonly property bool busy: wizard ? wizard.busy : false
    readonly property bool summary: wizard ? wizard.summary : false

    signal finish()

    function goOn(): void {
        if (!wizard || busy)
            return;
        if (summary)
            wizard.finish();
        else
            wizard.allow();
    }
    function present(operation: int): void {
        if (!wizard)
            return;
        if (summary)
            stage.replace(null, summaryPage, {}, operation);
        else
            stage.replace(null, stepPage, {
                "info": wizard.current
            }, operation);
        actions.takeFocus();
    }
    function scrollBy(distance: real): void {
        const page = stage.currentItem as OnboardingPage;
        if (page)
            page.scrollBy(distance);
    }

    focus: true

    Component.onCompleted: {
        built = true;
        present(T.StackView.Immediate);
    }
    Keys.onDownPressed: scrollBy(Theme.s40)
    Keys.onEnterPressed: goOn()
    Keys.onEscapePressed: event => event.accepted = true // nothing is left by mistake
    Keys.onReturnPressed: goOn()
    Keys.onUpPressed: scrollBy(-Theme.s40)
    onWizardChanged: if (built)
        present(T.StackView.Immediate)

    Connections {
        function onFinished() {
            root.finish();
        }
        function onStepChanged() {
            root.present(T.StackView.ReplaceTransition);
        }

        target: root.wizard
    }
    Rectangle {
        anchors.fill: parent
        color: Theme.wizard
    }
    Component {
        id: stepPage

        OnboardingStep {
        }
    }
    Component {
        id: summaryPage

        OnboardingSummary {
        }
    }
    ColumnLayout {
        anchors.fill: parent
        anchors.margins: Theme.s32
        spacing: Theme.s24

        OnboardingHeader {
            Layout.fillWidth: true
            counter: root.wizard ? root.wizard.counter : ""
            step: root.wizard ? root.wizard.step : 0
        }
        OnboardingStage {
            id: stage
            Layout.fillHeight: true
            Layout.fillWidth: true
        }
        OnboardingActions {
            id: actions
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: Math.min(Theme.px(compact ? 560 : 320), parent.width)
            busy: root.busy
            compact: root.height < Theme.px(640)
            info: root.wizard ? root.wizard.current : ({})
            last: root.summary ? root.end.button : ""

            onGoOn: root.goOn()
            onSkip: if (root.wizard)
                root.wizard.skip()
        }
    }
}
