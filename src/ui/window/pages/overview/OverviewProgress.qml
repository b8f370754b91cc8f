import QtQuick
import Zemrak.Kit

// The part of the ring that a connection check has come to: clockwise from the top.
Canvas {
    id: root

    property real band
    property color color
    property real progress // 0 to 1
    property real shown: progress

    onColorChanged: requestPaint()
    onPaint: {
        const context = getContext("2d");
        context.reset();
        context.beginPath();
        context.arc(width / 2, height / 2, (width - band) / 2, -Math.PI / 2, -Math.PI / 2 + 2 * Math.PI * shown);
        context.lineCap = "round";
        context.lineWidth = band;
        context.strokeStyle = color;
        context.stroke();
    }
    onShownChanged: requestPaint()

    Behavior on shown {
        id: wind
        // No animation back to the start when a new check begins.
        enabled: wind.targetValue > root.shown

        NumberAnimation {
            duration: Theme.stage
            easing.type: Easing.InOutQuad
        }
    }
}
