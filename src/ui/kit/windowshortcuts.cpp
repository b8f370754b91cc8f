#include "ui/kit/windowshortcuts.h"

#include <QEvent>
#include <QQuickItem>
#include <QQuickWindow>

namespace zemrak {

WindowShortcuts::WindowShortcuts(QQuickWindow &window)
    : QObject(&window)
    , m_window(window)
{
    window.installEventFilter(this);
}

bool WindowShortcuts::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != &m_window || event->type() != QEvent::ShortcutOverride)
        return false;
    const QQuickItem *focused = m_window.activeFocusItem();
    if (!focused || !focused->inherits("QQuickTextEdit") || !focused->property("readOnly").toBool())
        return false;
    event->ignore(); // not accepted: Qt looks for a shortcut, and sends the key to the text if there is none
    return true;
}

} // namespace zemrak
