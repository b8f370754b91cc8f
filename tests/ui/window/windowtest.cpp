#include "ui/window/windowtest.h"

namespace zemrak::test {

void WindowTest::initTestCase()
{
    QAccessible::setActive(true);
    m_warnings = std::make_unique<Warnings>();
}

void WindowTest::setUp()
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
    QVERIFY(m_stage->enter(QString::fromLatin1(situation)));
    open();
    view().setPage(QString::fromLatin1(pageId));
    settle();
}

void WindowTest::settle()
{
    QCoreApplication::processEvents();
    QVERIFY(window() == nullptr || !window()->grabWindow().isNull());
}

} // namespace zemrak::test
