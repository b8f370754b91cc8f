import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

// Pairing is the system's business; what to do there.
Card {
    icon: "wave.3.right"
    title: "بلوتوث"

    Note {
        Layout.fillWidth: true
        icon: "info.circle"
        text: "اقرن الطابعة من إعدادات بلوتوث في macOS، فتظهر تلقائيًا في قائمة الطابعات كطابعة بلوتوث/تسلسلية."
    }
}
