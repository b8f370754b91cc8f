import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The demo's own panel: a button per situation and per registered page or sheet, and the person's taste.
BaseWindow {
    id: root

    required property var control

    height: 760
    title: "Zemrak demo"
    width: 420

    ScrollPage {
        anchors.fill: parent

        Card {
            Layout.fillWidth: true
            title: "المظهر"

            Tabs {
                Layout.fillWidth: true
                options: [{ "value": false, "label": "فاتح" }, { "value": true, "label": "داكن" }]
                value: Theme.dark
                onChosen: value => root.control.chooseDark(value)
            }
            Tabs {
                Layout.fillWidth: true
                options: [{ "value": 1, "label": "100%" }, { "value": 1.25, "label": "125%" }, { "value": 1.5, "label": "150%" }]
                value: Theme.textScale
                onChosen: value => root.control.chooseTextScale(value)
            }
            CheckRow {
                on: !Theme.animated
                text: "بلا حركة"
                onToggleRequested: value => root.control.chooseReducedMotion(value)
            }
            SecondaryButton {
                text: "معرض المكوّنات"
                onClicked: root.control.openGallery()
            }
        }
        Card {
            Layout.fillWidth: true
            title: "الحالة"

            Repeater {
                model: root.control.situationTitles

                SecondaryButton {
                    required property int index
                    required property string modelData

                    Layout.fillWidth: true
                    text: modelData
                    onClicked: root.control.enterSituation(index)
                }
            }
        }
        Card {
            Layout.fillWidth: true
            title: "الصفحات والأوراق"

            Repeater {
                model: root.control.shotNames

                SecondaryButton {
                    required property int index
                    required property string modelData

                    Layout.fillWidth: true
                    text: modelData
                    onClicked: root.control.openShot(index)
                }
            }
        }
    }
}
