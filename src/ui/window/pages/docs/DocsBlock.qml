import QtQuick

// One block of the guide: what its kind is shown by gets it as `block`.
Item {
    id: root

    required property int index
    required property string kind
    required property string blockText
    required property string lang
    required property string code
    required property var rows
    required property var shares
    required property bool monoFirst
    readonly property var shownBy: ({
            heading: "DocsHeading.qml",
            text: "DocsText.qml",
            note: "DocsNote.qml",
            code: "DocsCode.qml",
            table: "DocsTable.qml"
        })

    implicitHeight: loader.implicitHeight

    Component.onCompleted: loader.setSource(shownBy[kind], {
        block: root
    })

    Loader {
        id: loader
        anchors.left: parent.left
        anchors.right: parent.right
    }
}
