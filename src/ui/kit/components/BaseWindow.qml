import QtQuick
import QtQuick.Window
import Zemrak.Kit

// Every window is one of these: right to left, in the theme's ground, deaf to the repeats of a held key.
Window {
    id: root

    // Set here and nowhere else.
    LayoutMirroring.childrenInherit: true
    LayoutMirroring.enabled: true
    color: Theme.gBg

    HeldKeys {
        window: root
    }
}
