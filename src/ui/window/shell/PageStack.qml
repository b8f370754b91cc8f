import QtQuick
import Zemrak.Window

// The page that is shown. A page is built when it is first chosen and kept from then on, with its place and its texts.
FocusScope {
    Repeater {
        model: Pages

        Loader {
            id: loader

            required property string pageId
            readonly property bool chosen: Ui.session.view.page === pageId

            anchors.fill: parent
            focus: chosen
            visible: chosen

            function build() {
                if (chosen && !item)
                    source = Pages.source(pageId);
            }

            Component.onCompleted: build()
            onChosenChanged: build()
        }
    }
}
