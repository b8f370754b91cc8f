// The main window on stored situations: every page and sheet of the demo's table, navigation, keyboard, closing.
#include "app/windowloader.h"
#include "demo/shots.h"
#include "support/rows.h"
#include "support/testmain.h"
#include "ui/window/shell/windowplacement.h"
#include "ui/window/windowtest.h"

#include <QPointer>
#include <QScreen>

#include <malloc.h>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

qsizetype openFiles()
{
    return QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System).size();
}

// What a screen reader would stumble over: a control without a name, and an object where words should be.
QString unspeakable(QQuickItem *root)
{
    QString found;
    for (QQuickItem *item : itemsWhere(root, [](const QQuickItem *) { return true; })) {
        QAccessibleInterface *told = QAccessible::queryAccessibleInterface(item);
        const QString name = told ? told->text(QAccessible::Name) : QString();
        const QString words = told ? name + told->text(QAccessible::Description) : QString();
        const bool unnamed = told && item->activeFocusOnTab() && item->isEnabled() && name.isEmpty();
        if (unnamed || words.contains("QMLTYPE"_L1) || words.contains("QQuick"_L1) || name == "undefined"_L1)
            found += QLatin1String(item->metaObject()->className()) + u": "_s + words + u'\n';
    }
    return found;
}

QRect rectOf(const QString &text)
{
    const QStringList numbers = text.split(u' ');
    return {numbers[0].toInt(), numbers[1].toInt(), numbers[2].toInt(), numbers[3].toInt()};
}

} // namespace

class MainWindowTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void everyShot_data()
    {
        QTest::addColumn<std::size_t>("row");
        for (std::size_t row = 0; row < shots().size(); ++row)
            QTest::newRow(qPrintable(shots()[row].name)) << row;
    }
    void everyShot()
    {
        QFETCH(std::size_t, row);
        QVERIFY(m_stage->enter(shots()[row].situation));
        for (const bool isLarge : {false, true}) { // light; dark with large letters, by the same engine
            m_window->appearance().overrideDark(isLarge);
            m_window->appearance().overrideTextScale(isLarge ? 1.5 : 1);
            open();
            shots()[row].open(ui());
            settle();
            QCOMPARE(unspeakable(root()), QString());
            const QPointer<QQuickWindow> shown(window());
            m_window->close(); // also with a sheet open
            QVERIFY(!shown);
        }
    }

    void sidebar()
    {
        enter("shop");
        open();
        QCOMPARE(view().winSize().width(), double(window()->width()));
        double above = -1;
        for (const PageInfo &page : pageTable()) {
            const QQuickItem *entry = find(page.title.toUtf8());
            QVERIFY2(entry, qPrintable(page.title));
            const QPointF place = entry->mapToScene({});
            QVERIFY(place.x() > window()->width() - view().sidebarWidth() && place.y() > above);
            above = place.y();
        }
        QCOMPARE(find("الخدمة تعمل")->property("tone").value<QColor>(), QColor(0x16a34a));
        QQuickItem *alerts = find("الإشعارات");
        QVERIFY(itemWithText(alerts, u"2"_s));
        enter("quiet");
        QTRY_VERIFY(!itemWithText(alerts, u"2"_s));
        QVERIFY(!itemWithText(alerts, u"0"_s));
        enter("stopped");
        QCOMPARE(find("الخدمة متوقفة")->property("tone").value<QColor>(), QColor(0xdc2626));
        QVERIFY(!find("الخدمة تعمل"));
    }

    void goesWhereItIsAsked()
    {
        open();
        for (int i = 0; i < 2; ++i) { // the same request counts again
            view().setPage(u"printers"_s);
            view().setAdding(true);
            agent().setRequestedPage(Page::Alerts);
            QCOMPARE(view().page(), u"alerts"_s);
            QVERIFY(!agent().requestedPage() && !view().isAdding());
        }
        m_window->close();
        agent().setRequestedPage(Page::Alerts); // a click that opens the window
        open();
        QCOMPARE(view().page(), u"alerts"_s);
        QVERIFY(!agent().requestedPage());
        QTest::ignoreMessage(QtWarningMsg, "There is no page \"nowhere\"");
        view().setPage(u"nowhere"_s);
        QCOMPARE(view().page(), u"alerts"_s);
        QCOMPARE(m_warnings->take().size(), 1);
    }

    void obeysTheKeyboard()
    {
        enter("crowded");
        open();
        int digit = Qt::Key_1;
        for (const char *page : {"overview", "printers", "designer", "sites", "jobs", "alerts", "docs", "settings"}) {
            key(digit++, Qt::ControlModifier);
            QCOMPARE(view().page(), QLatin1String(page));
            settle();
        }
        enter("shop");
        view().setPage(u"alerts"_s);
        find("انقطعت الطابعة «Bar»")->forceActiveFocus(); // a text that can be selected, not edited
        key(Qt::Key_1, Qt::ControlModifier);
        QCOMPARE(view().page(), u"overview"_s);
        enter("stopped");
        view().setShowLog(true);
        QTRY_VERIFY(find("لا توجد رسائل."));
        key(Qt::Key_Escape);
        QTRY_VERIFY(!view().showsLog());
        QSignalSpy quit(m_window->engine(), &QQmlEngine::quit);
        disconnect(m_window->engine(), &QQmlEngine::quit, qApp, nullptr);
        key(Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(quit.count(), 1);
        key(Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(!m_window->isOpen());
    }

    void reachesTheSidebarByTabAndArrows()
    {
        open();
        QQuickItem *first = find("نظرة عامة");
        for (int i = 0; i < 40 && focusItem() != first; ++i)
            key(Qt::Key_Tab);
        QCOMPARE(focusItem(), first);
        key(Qt::Key_Down);
        key(Qt::Key_Return);
        QCOMPARE(view().page(), u"printers"_s);
        key(Qt::Key_Up);
        key(Qt::Key_Space);
        QCOMPARE(view().page(), u"overview"_s);
        key(Qt::Key_Tab);
        QCOMPARE(focusItem(), find("فحص الاتصال"));
        key(Qt::Key_Backtab);
        QCOMPARE(focusItem(), first);
        key(Qt::Key_2, Qt::ControlModifier); // which leaves the keyboard where it is
        key(Qt::Key_Tab, {}, 2);
        QVERIFY(!first->activeFocusOnTab());
    }

    void showsTheMessageOverASheet()
    {
        open();
        view().setAdding(true);
        agent().flash(u"تم الحفظ"_s);
        QTRY_VERIFY(find("تم الحفظ"));
        m_clock.advance(2500ms);
        QTRY_VERIFY(!find("تم الحفظ"));
    }

    void closingGivesEverythingBack()
    {
        int closed = 0;
        m_window->onClosed([&closed] { ++closed; });
        open();
        const QPointer<QQuickWindow> shown(window());
        const QPointer<WindowSession> ended(&session());
        view().setPage(u"jobs"_s);
        session().jobs()->setSearch(u"x"_s);
        view().setProperty("newSite", u"https://half.typed"_s);
        view().setAdding(true);
        window()->close(); // by its frame
        QTRY_VERIFY(!m_window->isOpen());
        QVERIFY(!shown && !ended && !ui().session());
        QCOMPARE(closed, 1);
        open();
        QCOMPARE(view().page(), u"overview"_s);
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
        const auto bytes = qint64(::mallinfo2().uordblks); // nothing where a sanitizer allocates
        openTimes(10);
        QTRY_VERIFY(openFiles() <= files); // a command of the service may still be ending
        const qint64 more = qint64(::mallinfo2().uordblks) - bytes;
        QVERIFY2(more < 60'000, qPrintable(u"%1 bytes more"_s.arg(more)));
    }

    void remembersItsSize()
    {
        open();
        const auto stored = [this] { return m_stage->defaults().strings("mainWindowFrame"_L1); };
        QCOMPARE(stored(), QStringList());
        const QSize room = window()->screen()->availableSize();
        QCOMPARE(window()->width(), std::min(room.width(), 1020));
        QVERIFY(window()->height() < std::min(room.height(), 761)); // the title bar needs some
        window()->setWindowStates(Qt::WindowMaximized);
        m_window->close();
        const auto first = WindowPlacement::fromStrings(stored());
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

    void placement()
    {
        for (const QStringList &row : rowsOf(R"(
                inside        | 100 50 800 600    | 100 50 800 600
                too large     | 0 0 5000 5000     | 0 0 1280 1000
                on the second | 1300 10 600 500   | 1300 10 600 500
                half out      | -300 800 700 500  | 0 500 700 500
                screen gone   | 9000 9000 700 500 | 580 500 700 500)")) {
            const QRect frame = rectOf(row[1]);
            QCOMPARE(fitted(frame, {QRect(0, 0, 1280, 1000), QRect(1280, 0, 800, 600)}), rectOf(row[2]));
            const WindowPlacement placement{frame, true};
            QCOMPARE(WindowPlacement::fromStrings(placement.toStrings()), placement);
        }
        for (const char *text : {"", "1,2,3,4", "a,2,3,4,normal", "1,2,0,4,normal", "1,2,-3,4,normal",
                 "1,2,3,999999999,normal", "1,2,3,4,normal,5"})
            QVERIFY2(!WindowPlacement::fromStrings(QString::fromLatin1(text).split(u',')), text);
    }

    // As the window finds it before it has a size.
    void sizes()
    {
        MainView view(agent(), m_stage->defaults(), m_window->appearance());
        QCOMPARE(view.winSize(), QSizeF(1000, 720));
        QCOMPARE(view.contentWidth(), 696.0);
        QCOMPARE(view.ringScale(), 1.0);
        QVERIFY(!pageFromId(u"Overview") && Pages().title({}).isEmpty());
    }

    void pluginThatIsNotThere()
    {
        WindowLoader loader(ApplicationBundle(u"/nowhere"_s), m_stage->services());
        for (int i = 0; i < 2; ++i) {
            loader.show();
            QVERIFY(!loader.isOpen());
            QVERIFY(m_warnings->take().join(u' ').contains(u"The window cannot be shown: "));
        }
        loader.close();
    }
};

ZEMRAK_TEST(window, MainWindowTest, QApplication)
#include "tst_window.moc"
