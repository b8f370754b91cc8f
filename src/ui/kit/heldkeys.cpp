#include "ui/kit/heldkeys.h"

#include <QKeyEvent>
#include <QQuickItem>

namespace zemrak {

namespace {

bool takesBlanks(const QQuickItem *focused)
{
    return focused && (focused->inherits("QQuickTextInput") || focused->inherits("QQuickTextEdit"))
        && !focused->property("readOnly").toBool();
}

} // namespace

void HeldKeys::setWindow(QQuickWindow *window)
{
    if (window == m_window)
        return;
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = window;
    if (m_window)
        m_window->installEventFilter(this);
    Q_EMIT windowChanged();
}

bool HeldKeys::eventFilter(QObject *watched, QEvent *event)
{
    // Some systems repeat the release as well, which is what clicks for the space bar.
    if (watched != m_window || (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease))
        return false;
    const auto *key = static_cast<QKeyEvent *>(event);
    if (!key->isAutoRepeat())
        return false;
    switch (key->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return true;
    case Qt::Key_Space:
        return !takesBlanks(m_window->activeFocusItem());
    default:
        return false;
    }
}

} // namespace zemrak
