#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>

namespace zemrak {

/// Keeps what a list view has made, its rows, section heads, header and footer, in the order in which they are seen: by
/// the order of the items go assistive technology and the Tab key, and a list view leaves them in that of their making.
/// Put it inside the window of that view.
class RowOrder : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QQuickItem *view READ view WRITE setView NOTIFY viewChanged)

public:
    using QObject::QObject;

    [[nodiscard]] QQuickItem *view() const { return m_view; }
    /// A Flickable; null: none.
    void setView(QQuickItem *view);

Q_SIGNALS:
    void viewChanged();

private:
    void follow(QQuickWindow *window);
    void sort();

    QPointer<QQuickItem> m_view;
    QPointer<QQuickItem> m_content; ///< what holds the rows
    QMetaObject::Connection m_frames;
};

} // namespace zemrak
