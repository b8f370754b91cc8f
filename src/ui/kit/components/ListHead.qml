import QtQuick
import Zemrak.Kit

// What stands above the rows of a list and scrolls with them, there only while `shown`. When it comes or goes, a list
// whose first row was visible is scrolled to its beginning, which ListView does not do; one further down stays.
Item {
    id: root

    property bool shown: false
    default property alias content: column.data
    readonly property ListView list: ListView.view as ListView

    height: shown ? column.implicitHeight : 0
    visible: shown
    width: list ? list.width : 0

    onHeightChanged: whenLaidOut.restart()

    Column {
        id: column
        width: parent.width
    }
    Timer {
        id: whenLaidOut
        interval: 0

        onTriggered: if (root.list && root.list.contentY - root.list.originY <= root.height)
            root.list.positionViewAtBeginning()
    }
}
