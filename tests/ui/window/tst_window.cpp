// The main window on stored situations: every page and sheet of the demo's table, navigation, keyboard, closing.
#include "demo/shots.h"
#include "support/testmain.h"
#include "ui/window/shell/pages.h"
#include "ui/window/shell/windowplacement.h"
#include "ui/window/windowtest.h"

#include <QApplication>
#include <QDir>
#include <QPointer>
#include <QQmlEngine>
#include <QScreen>
#include <QSignalSpy>

#include <malloc.h>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

qsizetype openFiles()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size();
}

// What a screen reader would stumble over: a control without a name, and an object where words should be.
QStringList unspeakable(QQuickItem *item)
{
    QStringList found;
    if (!item->isVisible())
        return found;
    if (QAccessibleInterface *told = QAccessible::queryAccessibleInterface(item)) {
        const QString name = told->text(QAccessible::Name);
        const QString words = name + told->text(QAccessible::Description);
        const bool reached = item->activeFocusOnTab() && item->isEnabled();
        if (words.contains(QLatin1String("QMLTYPE")) || words.contains(QLatin1String("QQuick"))
            || name == QLatin1String("undefined") || (reached && name.isEmpty()))
            found.append(QLatin1String(item->metaObject()->className()) + QLatin1String(": ") + words);
    }
    for (QQuickItem *child : item->childItems())
        found += unspeakable(child);
    return found;
}

} // namespace

class MainWindowTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void everyShot_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("dark");
        QTest::addColumn<double>("textScale");
        for (std::size_t row = 0; row < shots().size(); ++row) {
            QTest::addRow("%s", qPrintable(shots()[row].name)) << int(row) << false << 1.0;
            QTest::addRow("%s dark 1.5", qPrintable(shots()[row].name)) << int(row) << true << 1.5;
        }
        QTest::addRow("crowded") << -1 << false << 1.0;
    }

    void everyShot()
    {
        QFETCH(int, row);
        QFETCH(bool, dark);
        QFETCH(double, textScale);
        m_window->appearance().overrideDark(dark);
        m_window->appearance().overrideTextScale(textScale);
        if (row < 0) {
            QVERIFY(m_stage->enter(QStringLiteral("crowded")));
            open();
            for (const PageInfo &page : pageTable())
                showPage(page.id);
            return;
        }
        const Shot &shot = shots()[static_cast<std::size_t>(row)];
        QVERIFY(m_stage->enter(shot.situation));
        open();
        shot.open(ui());
        QVERIFY(!window()->grabWindow().isNull());
        QCOMPARE(unspeakable(window()->contentItem()).join(u'\n'), QString());
        const QPointer<QQuickWindow> shown(window());
        m_window->close(); // also with a sheet open
        QVERIFY(!shown);
    }

    void sidebarStandsAtTheRight()
    {
        QVERIFY(m_stage->enter(QStringLiteral("shop")));
        open();
        QCOMPARE(view().winSize().width(), double(window()->width()));
        double above = -1;
        for (const PageInfo &page : pageTable()) {
            QQuickItem *entry = itemWithText(root(), page.title);
            QVERIFY2(entry, qPrintable(page.title));
            const QPointF place = entry->mapToScene({});
            QVERIFY(place.x() > window()->width() - view().sidebarWidth());
            QVERIFY(place.y() > above);
            above = place.y();
        }
    }

    void saysWhetherTheServiceAnswers()
    {
        QVERIFY(m_stage->enter(QStringLiteral("stopped")));
        open();
        QQuickItem *stopped = itemWithText(root(), QStringLiteral("الخدمة متوقفة"));
        QVERIFY(stopped);
        QCOMPARE(stopped->property("tone").value<QColor>(), QColor(0xdc2626));
        QVERIFY(m_stage->enter(QStringLiteral("shop")));
        QQuickItem *works = itemWithText(root(), QStringLiteral("الخدمة تعمل"));
        QVERIFY(works);
        QCOMPARE(works->property("tone").value<QColor>(), QColor(0x16a34a));
        QVERIFY(!itemWithText(root(), QStringLiteral("الخدمة متوقفة")));
    }

    void countsAlerts()
    {
        QVERIFY(m_stage->enter(QStringLiteral("shop")));
        open();
        QQuickItem *entry = itemWithText(root(), QStringLiteral("الإشعارات"));
        QVERIFY(entry);
        QVERIFY(itemWithText(entry, QStringLiteral("2")));
        QVERIFY(m_stage->enter(QStringLiteral("quiet")));
        QTRY_COMPARE(m_stage->agent().alertsBadge(), 0);
        QVERIFY(!itemWithText(entry, QStringLiteral("2")));
        QVERIFY(!itemWithText(entry, QStringLiteral("0")));
    }

    void goesWhereItIsAsked()
    {
        open();
        showPage(QLatin1String("printers"));
        view().setAdding(true);
        for (int i = 0; i < 2; ++i) { // the same request counts again
            m_stage->agent().setRequestedPage(Page::Alerts);
            QCOMPARE(view().page(), QStringLiteral("alerts"));
            QVERIFY(!m_stage->agent().requestedPage());
            QVERIFY(!view().isAdding());
            showPage(QLatin1String("printers"));
        }
        m_window->close();
        m_stage->agent().setRequestedPage(Page::Alerts); // a click that opens the window
        open();
        QCOMPARE(view().page(), QStringLiteral("alerts"));
        QVERIFY(!m_stage->agent().requestedPage());
    }

    void obeysTheKeyboard()
    {
        open();
        int digit = Qt::Key_1;
        for (const PageInfo &page : pageTable()) {
            QTest::keyClick(window(), Qt::Key(digit++), Qt::ControlModifier);
            QCOMPARE(view().page(), QString(page.id));
        }
        QVERIFY(m_stage->enter(QStringLiteral("shop")));
        showPage(QLatin1String("alerts"));
        QQuickItem *text = itemWithText(root(), QStringLiteral("انقطعت الطابعة «Bar»"));
        QVERIFY(text);
        text->forceActiveFocus(); // which can be selected, not edited
        QTest::keyClick(window(), Qt::Key_1, Qt::ControlModifier);
        QCOMPARE(view().page(), QStringLiteral("overview"));
        m_stage->enter(QStringLiteral("stopped"));
        view().setShowLog(true);
        QTRY_VERIFY(itemWithText(root(), QStringLiteral("لا توجد رسائل.")));
        QTest::keyClick(window(), Qt::Key_Escape);
        QTRY_VERIFY(!view().showsLog());
        QSignalSpy quit(m_window->engine(), &QQmlEngine::quit);
        disconnect(m_window->engine(), &QQmlEngine::quit, qApp, nullptr);
        QTest::keyClick(window(), Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(quit.count(), 1);
        QTest::keyClick(window(), Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(!m_window->isOpen());
    }

    void reachesTheSidebarByTabAndArrows()
    {
        open();
        QQuickWindow *window = this->window();
        QQuickItem *first = itemWithText(root(), QStringLiteral("نظرة عامة"));
        for (int i = 0; i < 40 && window->activeFocusItem() != first; ++i)
            QTest::keyClick(window, Qt::Key_Tab);
        QCOMPARE(window->activeFocusItem(), first);
        QTest::keyClick(window, Qt::Key_Down);
        QTest::keyClick(window, Qt::Key_Return);
        QCOMPARE(view().page(), QStringLiteral("printers"));
        QTest::keyClick(window, Qt::Key_Up);
        QTest::keyClick(window, Qt::Key_Space);
        QCOMPARE(view().page(), QStringLiteral("overview"));
        QTest::keyClick(window, Qt::Key_Tab);
        QCOMPARE(window->activeFocusItem(), itemWithText(root(), QStringLiteral("فحص الاتصال")));
        QTest::keyClick(window, Qt::Key_Backtab);
        QCOMPARE(window->activeFocusItem(), first);
        QTest::keyClick(window, Qt::Key_2, Qt::ControlModifier); // which leaves the keyboard where it is
        QTest::keyClick(window, Qt::Key_Tab);
        QTest::keyClick(window, Qt::Key_Tab);
        QVERIFY(!first->activeFocusOnTab());
    }

    void showsTheMessageOverASheet()
    {
        open();
        view().setAdding(true);
        m_stage->agent().flash(QStringLiteral("تم الحفظ"));
        QTRY_VERIFY(itemWithText(root(), QStringLiteral("تم الحفظ")));
        m_clock.advance(2500ms);
        QTRY_VERIFY(!itemWithText(root(), QStringLiteral("تم الحفظ")));
    }

    void closingGivesEverythingBack()
    {
        int closed = 0;
        m_window->onClosed([&closed] { ++closed; });
        open();
        const QPointer<QQuickWindow> shown(window());
        const QPointer<WindowSession> ended(&session());
        showPage(QLatin1String("jobs"));
        session().jobs()->setSearch(QStringLiteral("x"));
        view().setProperty("newSite", QStringLiteral("https://half.typed"));
        view().setAdding(true);
        m_window->window()->close(); // by its frame
        QTRY_VERIFY(!m_window->isOpen());
        QVERIFY(!shown && !ended && !ui().session());
        QCOMPARE(closed, 1);
        open();
        QCOMPARE(view().page(), QStringLiteral("overview"));
        QVERIFY(!view().isAdding() && !session().addPrinter());
        QVERIFY(session().jobs()->search().isEmpty() && view().property("newSite").toString().isEmpty());
        m_window->close();
        m_window->close();
        QCOMPARE(closed, 2);
    }

    void openingAgainAndAgainHoldsNoMore()
    {
        const auto openTimes = [this](int times) {
            for (int i = 0; i < times; ++i) {
                open();
                m_window->close();
            }
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        };
        openTimes(4);
        const qsizetype files = openFiles();
        const std::size_t bytes = ::mallinfo2().uordblks; // nothing where a sanitizer allocates
        openTimes(10);
        QTRY_VERIFY(openFiles() <= files); // a command of the service may still be ending
        const auto more = static_cast<qint64>(::mallinfo2().uordblks) - static_cast<qint64>(bytes);
        QVERIFY2(more < 60'000, qPrintable(QStringLiteral("%1 bytes more").arg(more)));
    }

    void remembersItsSize()
    {
        open();
        QCOMPARE(m_stage->defaults().strings(QLatin1String("mainWindowFrame")), QStringList());
        const QSize room = window()->screen()->availableSize();
        QCOMPARE(window()->width(), std::min(room.width(), 1020));
        QVERIFY(window()->height() < std::min(room.height(), 761)); // the title bar needs some
        window()->setWindowStates(Qt::WindowMaximized);
        m_window->close();
        const auto first = WindowPlacement::fromStrings(m_stage->defaults().strings(QLatin1String("mainWindowFrame")));
        QVERIFY(first && first->maximized);
        QCOMPARE(first->frame.size(), QSize(1020, 760)); // for when it is made smaller again
        open();
        QVERIFY(window()->windowStates() & Qt::WindowMaximized);
        window()->setWindowStates(Qt::WindowNoState);
        window()->setGeometry(5, 20, 793, 601);
        QTRY_COMPARE(window()->width(), 793);
        m_window->close();
        open();
        QCOMPARE(window()->geometry(), QRect(5, 20, 793, 601));
    }

    void opensTheWizardUntilItIsDone()
    {
        m_stage->defaults().setBoolean(QLatin1String("onboardingDone"), false);
        open();
        QVERIFY(view().showsOnboarding());
        QVERIFY(!itemWithText(root(), QStringLiteral("الطابعات"))); // nothing of the pages shows through
        view().finishOnboarding();
        QVERIFY(m_stage->defaults().boolean(QLatin1String("onboardingDone")));
        QVERIFY(itemWithText(root(), QStringLiteral("الطابعات")));
        m_window->close();
        open();
        QVERIFY(!view().showsOnboarding());
    }

private:
    void showPage(QLatin1String id)
    {
        view().setPage(id);
        QVERIFY(!window()->grabWindow().isNull());
    }
};

ZEMRAK_TEST(window, MainWindowTest, QApplication)
#include "tst_window.moc"
