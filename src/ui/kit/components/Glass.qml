import QtQuick
import Zemrak.Kit

// A translucent ground with round corners.
Rectangle {
    border.color: Theme.tint(Theme.gBorder, 0.8)
    border.width: Theme.stroke
    color: Theme.tint(Theme.gCard, 0.72)
    radius: Theme.radiusCard
}
