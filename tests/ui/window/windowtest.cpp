#include "ui/window/windowtest.h"

#include "support/wiredata.h"

namespace zemrak::test {

void WindowTest::initTestCase()
{
    QAccessible::setActive(true);
    m_warnings = std::make_unique<Warnings>();
}

void WindowTest::init()
{
    m_stage = std::make_unique<Stage>(m_clock);
    m_window = std::make_unique<QmlWindow>(m_stage->services());
    m_window->appearance().overrideReducedMotion(true);
    m_window->appearance().overrideDark(false);
    m_window->appearance().overrideTextScale(1);
    m_warnings->forget();
}

void WindowTest::cleanup()
{
    m_window.reset();
    m_stage.reset();
    QCOMPARE(m_warnings->take(), QStringList());
}

void WindowTest::open()
{
    QCoreApplication::processEvents(); // what a window that was closed before has left for later
    m_window->show({});
    QVERIFY(m_window->isOpen());
    QVERIFY(QTest::qWaitForWindowActive(window()));
}

void WindowTest::open(const char *situation, const char *pageId)
{
    enter(situation);
    open();
    view().setPage(QString::fromLatin1(pageId));
    settle();
}

void WindowTest::enter(const char *situation, const Answers &answers)
{
    Situation entered = *findSituation(QString::fromLatin1(situation));
    entered.answers = [all = entered.answers(), answers]() mutable {
        all.insert(answers);
        return all;
    };
    QVERIFY2(m_stage->enter(entered), situation);
}

void WindowTest::enterWith(
    const char *situation, const char *list, const std::function<QJsonArray(const QJsonArray &)> &change)
{
    const Answers answers = findSituation(QString::fromLatin1(situation))->answers();
    for (const char *path : {"/admin/state", "/admin/alerts"}) {
        QJsonObject body = QJsonDocument::fromJson(answers.value(path)).object();
        if (!body.contains(QLatin1String(list)))
            continue;
        body[QLatin1String(list)] = change(body.value(QLatin1String(list)).toArray());
        enter(situation, {{path, toJson(body)}});
    }
}

void WindowTest::settle()
{
    QCoreApplication::processEvents();
    QVERIFY(window() == nullptr || !window()->grabWindow().isNull());
}

QQuickItem *WindowTest::find(const char *words, const char *property)
{
    return itemWith(root(), property, QString::fromUtf8(words));
}

qsizetype WindowTest::count(const char *words, const char *property)
{
    return itemsWith(root(), property, QString::fromUtf8(words)).size();
}

QQuickItem *WindowTest::control(const char *words, QQuickItem *within)
{
    const QList<QQuickItem *> found = itemsWhere(within ? within : root(), [words](const QQuickItem *item) {
        return (item->activeFocusOnTab() || item->inherits("QQuickAbstractButton"))
            && std::ranges::any_of(std::array{"name", "text", "placeholderText", "placeholder"},
                [&](const char *property) { return item->property(property) == QString::fromUtf8(words); });
    });
    if (found.isEmpty())
        qFatal("nothing here is called %s", words);
    return found.last();
}

QString WindowTest::focused()
{
    const QQuickItem *item = focusItem();
    const QString name = item ? item->property("name").toString() : QString();
    return name.isEmpty() && item ? item->property("text").toString() : name;
}

bool WindowTest::isInSight(const QQuickItem *item)
{
    return item && QRectF(QPointF(), window()->size()).contains(item->mapRectToScene(item->boundingRect()).center());
}

void WindowTest::key(int key, Qt::KeyboardModifiers modifiers, int times)
{
    for (int i = 0; i < times; ++i)
        QTest::keyClick(window(), Qt::Key(key), modifiers);
}

void WindowTest::type(const char *letters)
{
    for (; *letters; ++letters)
        QTest::keyClick(window(), *letters);
}

void WindowTest::goes(Qt::Key pressed, const char *to, int row)
{
    key(pressed);
    QCOMPARE(focused(), row ? QString::fromUtf8(to).arg(row) : QString::fromUtf8(to));
}

void WindowTest::focus(QQuickItem *item)
{
    item->forceActiveFocus(Qt::TabFocusReason);
    QCOMPARE(focusItem(), item);
}

void WindowTest::press(QQuickItem *item)
{
    focus(item);
    key(Qt::Key_Space);
}

void WindowTest::click(QQuickItem *item)
{
    item->forceActiveFocus(Qt::TabFocusReason);
    settle();
    QTest::mouseClick(window(), Qt::LeftButton, {}, centreOf(item));
}

} // namespace zemrak::test

#include "moc_windowtest.cpp"
