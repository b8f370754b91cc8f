#pragma once

#include <QCoreApplication>
#include <QKeyEvent>
#include <QWindow>

namespace zemrak::test {

/// A key that is pressed, kept down for so many repeats, and let go, as an X server tells it: each repeat is a release
/// and a press.
inline void holdKey(QWindow &window, Qt::Key key, int repeats)
{
    const auto send = [&window, key](QEvent::Type type, bool repeat) {
        QKeyEvent event(type, key, {}, key == Qt::Key_Space ? QStringLiteral(" ") : QString(), repeat);
        QCoreApplication::sendEvent(&window, &event);
    };
    send(QEvent::KeyPress, false);
    for (int i = 0; i < repeats; ++i) {
        send(QEvent::KeyRelease, true);
        send(QEvent::KeyPress, true);
    }
    send(QEvent::KeyRelease, false);
}

} // namespace zemrak::test
