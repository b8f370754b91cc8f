pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// How each step came out.
OnboardingPage {
    id: root

    readonly property WizardPresenter wizard: Ui.session.wizard
    readonly property var page: wizard ? wizard.summaryPage : ({})

    colors: page.colors ?? []
    icon: page.icon ?? ""
    text: page.text ?? ""
    title: page.title ?? ""

    GridLayout {
        Layout.topMargin: Theme.s8
        columnSpacing: Theme.s8
        columns: root.height < Theme.px(460) ? 2 : 1
        rowSpacing: Theme.s8

        Repeater {
            model: root.wizard ? root.wizard.outcomes : []

            Rectangle {
                id: line

                required property var modelData

                Accessible.name: modelData.title + ": " + modelData.text
                Accessible.role: Accessible.StaticText
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                color: Theme.tint(Theme.onFill, 0.07)
                implicitHeight: Math.max(Theme.px(40), row.implicitHeight + Theme.s16)
                radius: Theme.radiusControl

                RowLayout {
                    id: row
                    anchors.fill: parent
                    anchors.leftMargin: Theme.s16
                    anchors.rightMargin: Theme.s16
                    spacing: Theme.s12

                    LineText {
                        Layout.fillWidth: true
                        Accessible.ignored: true
                        color: Theme.onFill
                        value: line.modelData.title
                        weight: Font.Medium
                    }
                    LineText {
                        Accessible.ignored: true
                        color: Theme.named(line.modelData.color)
                        value: line.modelData.text
                        weight: Font.Bold
                    }
                }
            }
        }
    }
}
