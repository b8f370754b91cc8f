import QtQuick
import QtQuick.Templates as T

Item {
    property alias popup: popup

    height: 200
    width: 300

    TextInput {
        height: 30
        objectName: "field"
        text: "one"
        width: 100
    }
    TextInput {
        height: 30
        objectName: "other"
        text: "two"
        width: 100
        y: 50
    }
    Item {
        height: 30
        objectName: "button"
        width: 100
        y: 100
    }
    T.Popup {
        id: popup
        closePolicy: T.Popup.NoAutoClose
        height: 30
        width: 100
        y: 50
    }
}
