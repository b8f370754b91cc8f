pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// The integration guide: its tabs, the blocks of the chosen one, and a search over all of them.
ScrollPage {
    id: root

    readonly property string __selected: Ui.session.docs.selected
    readonly property bool searching: Ui.session.docs.searching
    property int wanted: -1 // the block to be scrolled to once all is laid out

    page: "docs"
    subtitle: "كيف تربط نظامك بالطابعة: أكواد جاهزة للنسخ لكل منصة"

    actions: SecondaryButton {
        busy: Ui.session.docs.exporting
        enabled: !busy
        symbol: "square.and.arrow.up"
        text: "تصدير Markdown"

        onClicked: Ui.session.docs.exportMarkdown()
    }

    function show(block: Item): void {
        const last = Math.max(0, view.contentHeight - view.height);
        contentY = Math.min(last, block.mapToItem(view.contentItem, 0, 0).y - Theme.s16);
        block.forceActiveFocus(Qt.OtherFocusReason); // the Tab key goes on from there
    }

    onSearchingChanged: contentY = 0

    SearchField {
        id: field
        Layout.fillWidth: true
        name: placeholder
        placeholder: "ابحث في التوثيق كله"

        Keys.onDownPressed: if (root.searching && hits.count > 0)
            hits.itemAt(0).forceActiveFocus(Qt.TabFocusReason)
        onTextChanged: Ui.session.docs.search = text
    }
    Tabs {
        Layout.fillWidth: true
        options: Ui.session.docs.tabs
        value: root.__selected
        visible: !root.searching

        onChosen: value => Ui.session.docs.selected = value
    }
    Repeater {
        id: blocks
        model: root.searching ? null : Ui.session.docs.blocks

        DocsBlock {
            Layout.bottomMargin: kind === "heading" ? -Theme.s8 : 0 // nearer to what it is the heading of
            Layout.fillWidth: true
        }
    }
    Repeater {
        id: hits
        model: root.searching ? Ui.session.docs.hits : null

        DocsHit {
            Layout.fillWidth: true
        }
    }
    Note {
        Layout.fillWidth: true
        icon: "magnifyingglass"
        text: "توجد نتائج أخرى. اكتب كلمة أدق لتراها."
        visible: root.searching && Ui.session.docs.moreHits
    }
    EmptyHint {
        Layout.fillWidth: true
        icon: "magnifyingglass"
        text: "جرّب كلمة أخرى، أو امسح البحث لتعود إلى التوثيق."
        title: "لا نتائج لهذا البحث"
        visible: root.searching && hits.count === 0
    }
    Connections {
        target: Ui.session.docs

        function onBlockWanted(block: int) {
            root.wanted = block;
        }
        function onSelectedChanged() {
            root.contentY = 0;
        }
        function onSearchChanged() {
            field.text = Ui.session.docs.search;
        }
    }
    Connections {
        enabled: root.wanted >= 0
        target: root.Window.window

        function onAfterAnimating() {
            const block = blocks.itemAt(root.wanted);
            if (block)
                root.show(block);
            root.wanted = -1;
        }
    }
}
