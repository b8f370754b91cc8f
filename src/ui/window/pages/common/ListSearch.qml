import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The search field of a list page: there while the list is long or searched. Down goes on to what it found.
SearchField {
    id: root

    property SearchModel found
    property ListView list

    Layout.fillWidth: true
    name: placeholder
    visible: found !== null && found.searchOffered

    Keys.onDownPressed: {
        if (list.count === 0)
            return;
        list.forceLayout(); // what was found may not stand there yet
        if (!list.currentItem) { // what was chosen is not among it
            list.currentIndex = -1;
            list.currentIndex = 0;
        }
        (list.currentItem ?? list).forceActiveFocus(Qt.TabFocusReason);
    }
    onTextChanged: if (found)
        found.search = text
}
