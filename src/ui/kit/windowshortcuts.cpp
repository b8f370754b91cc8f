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
    event->ignore(); // nobody claims the key, so shortcuts are looked up; the others reach the text as before
    return true;
}

} // namespace zemrak
