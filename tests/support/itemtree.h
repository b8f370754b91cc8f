#pragma once

#include <QAccessible>
#include <QQuickItem>
#include <QTest>

namespace zemrak::test {

/// `item` and all below it that `matches`, in the order in which they stand in the scene, where only what is visible
/// counts with all below it. A list's rows that are kept ready out of sight are visible, too.
template <typename Matches> [[nodiscard]] QList<QQuickItem *> itemsWhere(QQuickItem *item, Matches matches)
{
    QList<QQuickItem *> found;
    if (!item || !item->isVisible())
        return found;
    if (matches(item))
        found.append(item);
    for (QQuickItem *child : item->childItems())
        found += itemsWhere(child, matches);
    return found;
}

[[nodiscard]] inline QList<QQuickItem *> itemsWith(QQuickItem *item, const char *property, const QVariant &value)
{
    return itemsWhere(item, [&](const QQuickItem *candidate) { return candidate->property(property) == value; });
}

/// The first; null: there is none.
[[nodiscard]] inline QQuickItem *itemWith(QQuickItem *item, const char *property, const QVariant &value)
{
    return itemsWith(item, property, value).value(0);
}
[[nodiscard]] inline QQuickItem *itemWithText(QQuickItem *item, const QString &text)
{
    return itemWith(item, "text", text);
}

/// The first that is made by the QML file of that name.
[[nodiscard]] inline QQuickItem *itemOfType(QQuickItem *item, const char *file)
{
    return itemsWhere(item, [file](const QQuickItem *candidate) {
        return QByteArray(candidate->metaObject()->className()).startsWith(file);
    }).value(0);
}

[[nodiscard]] inline QPoint centreOf(QQuickItem *item)
{
    return item->mapToScene(item->boundingRect().center()).toPoint();
}

/// As a screen reader presses it. QAccessible must be active.
inline void pressAccessibly(QQuickItem *item)
{
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(item);
    QVERIFY(interface && interface->actionInterface());
    QVERIFY(!interface->text(QAccessible::Name).isEmpty());
    interface->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
}

} // namespace zemrak::test
