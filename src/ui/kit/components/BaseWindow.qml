import QtQuick
import QtQuick.Window
import Zemrak.Kit

// The base of every window: right to left, the theme's background, and no key repeats to controls (HeldKeys).
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
