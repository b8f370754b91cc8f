import QtQuick
import QtQuick.Layouts
import Zemrak.Kit

Rectangle {
    Layout.fillWidth: true
    Accessible.ignored: true
    color: Theme.gBorder
    implicitHeight: Theme.stroke
}
