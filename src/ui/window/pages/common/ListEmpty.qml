import QtQuick
import QtQuick.Layouts
import Zemrak.Kit
import Zemrak.Window

// In place of a list's rows: there are none, the search finds none, or the service has not told yet.
Item {
    id: root

    property bool searching: false
    property string icon
    property string title
    property string text
    property string expected // what appears once the service answers

    implicitHeight: column.implicitHeight

    ColumnLayout {
        id: column
        anchors.left: parent.left
        anchors.right: parent.right
        spacing: Theme.s12

        Note {
            Layout.fillWidth: true
            color: Agent.running ? Theme.gPrimary : Theme.gRed
            icon: Agent.running ? "clock.arrow.circlepath" : "exclamationmark.triangle.fill"
            text: Agent.running ? "بانتظار رد خدمة الطباعة. " + root.expected + " فور أن ترد." : "الخدمة متوقفة. " + root.expected + " فور أن تعمل."
            visible: !Ui.session.view.serviceAnswers
        }
        EmptyHint {
            Layout.fillWidth: true
            icon: root.searching ? "magnifyingglass" : root.icon
            text: root.searching ? "جرّب كلمة أخرى، أو امسح البحث لترى كل شيء." : root.text
            title: root.searching ? "لا نتائج لهذا البحث" : root.title
        }
    }
}
