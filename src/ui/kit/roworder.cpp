#include "ui/kit/roworder.h"

#include <QQuickWindow>

#include <algorithm>

namespace zemrak {

void RowOrder::setView(QQuickItem *view)
{
    if (m_view == view)
        return;
    if (m_view)
        m_view->disconnect(this);
    m_view = view;
    m_content = view ? view->property("contentItem").value<QQuickItem *>() : nullptr;
    if (view)
        connect(view, &QQuickItem::windowChanged, this, &RowOrder::follow);
    follow(view ? view->window() : nullptr);
    Q_EMIT viewChanged();
}

void RowOrder::follow(QQuickWindow *window)
{
    disconnect(m_frames);
    if (window) // with every frame, when the view has laid out its rows
        m_frames = connect(window, &QQuickWindow::afterAnimating, this, &RowOrder::sort);
}

void RowOrder::sort()
{
    if (!m_content)
        return;
    QList<QQuickItem *> items = m_content->childItems();
    const auto place = [](const QQuickItem *item) { return item->y(); };
    if (std::ranges::is_sorted(items, {}, place))
        return;
    std::ranges::stable_sort(items, {}, place);
    for (qsizetype i = 1; i < items.size(); ++i)
        items.at(i)->stackAfter(items.at(i - 1));
}

} // namespace zemrak
