import QtQuick
import QtQuick.Window
import Zemrak

// Every window is one of these: right to left, in the theme's ground.
Window {
    // Set here and nowhere else.
    LayoutMirroring.childrenInherit: true
    LayoutMirroring.enabled: true
    color: Theme.gBg
}
