#include "ui/kit/clickoutside.h"

#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>
#include <ranges>

namespace zemrak {

namespace {

bool isText(const QQuickItem *item)
{
    return item->inherits("QQuickTextInput") || item->inherits("QQuickTextEdit");
}

// The overlay of Qt Quick's popups covers the whole window; where it has no popup, clicks go to what is below.
bool isBareOverlay(const QQuickItem *item, QPointF point)
{
    return item->inherits("QQuickOverlay") && !item->childAt(point.x(), point.y());
}

const QQuickItem *topmostChild(const QQuickItem *item, QPointF scenePoint)
{
    QList<QQuickItem *> children = item->childItems();
    std::ranges::stable_sort(children, {}, &QQuickItem::z);
    for (const QQuickItem *child : children | std::views::reverse) {
        const QPointF point = child->mapFromScene(scenePoint);
        if (child->isVisible() && child->contains(point) && !isBareOverlay(child, point))
            return child;
    }
    return nullptr;
}

// The items under the point from the outermost to the innermost, as far as the topmost child at each level goes.
bool hitsText(const QQuickItem *root, QPointF scenePoint)
{
    for (const QQuickItem *item = root; item; item = topmostChild(item, scenePoint)) {
        if (isText(item))
            return true;
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
