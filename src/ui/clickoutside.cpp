#include "ui/clickoutside.h"

#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickWindow>

namespace zemrak {

namespace {

bool isText(const QQuickItem *item)
{
    return item->inherits("QQuickTextInput") || item->inherits("QQuickTextEdit");
}

// The items under the point from the outermost to the innermost, as far as the topmost child at each level goes.
bool hitsText(const QQuickItem *root, QPointF scenePoint)
{
    const QQuickItem *item = root;
    while (item) {
        if (isText(item))
            return true;
        const QPointF point = item->mapFromScene(scenePoint);
        item = item->childAt(point.x(), point.y());
    }
    return false;
}

} // namespace

ClickOutside::ClickOutside(QQuickWindow &window)
    : QObject(&window)
    , m_window(window)
{
    window.installEventFilter(this);
}

bool ClickOutside::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == &m_window && event->type() == QEvent::MouseButtonPress) {
        const auto *press = static_cast<QMouseEvent *>(event);
        QQuickItem *focused = m_window.activeFocusItem();
        const bool counts = press->button() == Qt::LeftButton || press->button() == Qt::RightButton;
        if (counts && focused && isText(focused) && !hitsText(m_window.contentItem(), press->position()))
            focused->setFocus(false, Qt::MouseFocusReason);
    }
    return QObject::eventFilter(watched, event);
}

} // namespace zemrak
