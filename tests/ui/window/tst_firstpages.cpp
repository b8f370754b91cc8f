// The overview and the page of printers: what presses and keys do there.
#include "app/agent.h"
#include "demo/stage.h"
#include "support/warnings.h"
#include "support/manualclock.h"
#include "support/testmain.h"
#include "ui/window/shell/qmlwindow.h"
#include "ui/window/shell/uicontext.h"

#include <QAccessible>
#include <QApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

const QString testPrint = QStringLiteral("طباعة تجربة");

// In the order in which they stand in the scene.
QList<QQuickItem *> visibleWith(QQuickItem *item, const QString &text, const char *property = "text")
{
    QList<QQuickItem *> found;
    if (item->isVisible() && item->activeFocusOnTab() && item->property(property).toString() == text)
        found.append(item);
    for (QQuickItem *child : item->childItems())
        found << visibleWith(child, text, property);
    return found;
}

QQuickItem *progressRing(QQuickItem *item)
{
    if (QByteArray(item->metaObject()->className()).startsWith("OverviewProgress"))
        return item;
    for (QQuickItem *child : item->childItems()) {
        if (QQuickItem *found = progressRing(child))
            return found;
    }
    return nullptr;
}

} // namespace

class FirstPagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QAccessible::setActive(true);
        m_warnings = std::make_unique<Warnings>();
    }

    void init()
    {
        m_stage = std::make_unique<Stage>(m_clock);
        m_window = std::make_unique<QmlWindow>(m_stage->services());
        m_window->appearance().overrideReducedMotion(true);
        m_window->appearance().overrideTextScale(1);
        (void)m_warnings->take();
    }

    void cleanup()
    {
        m_window.reset();
        m_stage.reset();
        QCOMPARE(m_warnings->take(), QStringList());
    }

    void ringStartsACheckAndFillsWithIt()
    {
        open("shop", "overview");
        QQuickItem *ring = control(QStringLiteral("فحص الاتصال"));
        press(ring);
        QVERIFY(m_stage->agent().isScanning());
        QCOMPARE(ring->property("tone").value<QColor>(), QColor(0xc084fc));
        QVERIFY(control(QStringLiteral("طابعات متصلة"))); // nothing else went away
        m_clock.advance(600ms);
        m_clock.advance(700ms);
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/scan").size(), 1);
        QTest::keyClick(m_window->window(), Qt::Key_Return); // while it runs, another press changes nothing
        for (int tenths = 0; tenths < 100 && m_stage->agent().isScanning(); ++tenths) {
            m_clock.advance(100ms);
            QTest::qWait(1);
        }
        QVERIFY(!m_stage->agent().isScanning());
        QCOMPARE(m_stage->server().requestsTo("/admin/scan").size(), 1);
        QTRY_COMPARE(ring->property("tone").value<QColor>(), QColor(0x16a34a));
    }

    void ringWindsOnFromStageToStage()
    {
        m_window->appearance().overrideReducedMotion(false);
        open("shop", "overview");
        for (int check = 0; check < 2; ++check) { // the second does not begin where the first ended
            press(control(QStringLiteral("فحص الاتصال")));
            QQuickItem *ring = progressRing(root());
            QVERIFY(ring);
            const auto shown = [ring] { return ring->property("shown").toDouble(); };
            QCOMPARE(shown(), 0.03);
            m_clock.advance(600ms);
            QCOMPARE(ring->property("progress").toDouble(), 0.22);
            QVERIFY(shown() < 0.22);
            QTRY_COMPARE(shown(), 0.22);
            m_clock.advance(700ms);
            QTRY_COMPARE(m_stage->server().requestsTo("/admin/scan").size(), check + 1);
            QTRY_VERIFY(m_clock.pending() > 0 && (m_clock.advance(1s), !m_stage->agent().isScanning()));
        }
    }

    void countersLeadToTheirPages()
    {
        open("shop", "overview");
        for (const auto &[counter, page] : {std::pair{QStringLiteral("طابعات متصلة"), "printers"},
                 {QStringLiteral("مواقع مصرّحة"), "sites"}, {QStringLiteral("وظائف اليوم"), "jobs"}}) {
            view().setPage(QStringLiteral("overview"));
            press(control(counter));
            QCOMPARE(view().page(), QLatin1String(page));
        }
    }

    void cardOpensSettingsHoweverItIsPressed()
    {
        open("shop", "printers");
        QQuickItem *card = control(QStringLiteral("المطبخ"));
        const std::pair<const char *, std::function<void()>> presses[] = {
            {"mouse", [&] { QTest::mouseClick(m_window->window(), Qt::LeftButton, {}, centre(card)); }},
            {"assistive technology", [&] { press(card); }},
            {"space", [&] { QTest::keyClick(m_window->window(), Qt::Key_Space); }},
            {"return", [&] { QTest::keyClick(m_window->window(), Qt::Key_Return); }},
        };
        for (const auto &[how, pressIt] : presses) {
            QTRY_VERIFY2(focus(card), how); // once the sheet before has gone
            pressIt();
            QTRY_COMPARE(view().editing(), QStringLiteral("cups-kitchen"));
            view().endEditing();
        }
    }

    void testPrintIsAButtonOfItsOwn()
    {
        open("shop", "printers");
        QQuickItem *card = control(QStringLiteral("Bar")); // offline: it can be tried all the same
        QQuickItem *button = visibleWith(card, testPrint).value(0);
        QVERIFY(button);
        for (int i = 0; i < 2; ++i)
            QTest::mouseClick(m_window->window(), Qt::LeftButton, {}, centre(button));
        QTRY_COMPARE(m_stage->agent().toast(), QStringLiteral("تم إرسال طباعة التجربة"));
        QCOMPARE(m_stage->server().requestsTo("/admin/test").size(), 1);
        m_clock.advance(Commands::oneWish);
        QVERIFY(m_stage->server().requestsTo("/admin/test").first().body.contains("net-2"));
        QVERIFY(focus(card));
        QTest::keyClick(m_window->window(), Qt::Key_Tab);
        QCOMPARE(m_window->window()->activeFocusItem(), button);
        QTest::keyClick(m_window->window(), Qt::Key_Return);
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/test").size(), 2);
        QCOMPARE(view().editing(), QString());
    }

    void arrowsWalkALongList()
    {
        open("crowded", "printers");
        QVERIFY(visibleWith(root(), testPrint).size() < 40); // of 500
        QVERIFY(focus(control(QStringLiteral("كاشير 1"))));
        for (int i = 0; i < 30; ++i)
            QTest::keyClick(m_window->window(), Qt::Key_Down);
        QQuickItem *card = m_window->window()->activeFocusItem();
        QCOMPARE(card->property("text").toString(), QStringLiteral("Bar 31"));
        QVERIFY(card->property("visualFocus").toBool());
        QVERIFY(QRectF(0, 0, m_window->window()->width(), m_window->window()->height())
                    .contains(card->mapRectToScene(card->boundingRect())));
        QTest::keyClick(m_window->window(), Qt::Key_Up);
        QVERIFY(m_window->window()->activeFocusItem() != card);
        // A poll that changes nothing leaves both where they are.
        const QQuickItem *focused = m_window->window()->activeFocusItem();
        const double y = focused->mapToScene({}).y();
        QVERIFY(m_stage->enter(QStringLiteral("crowded")));
        QCOMPARE(m_window->window()->activeFocusItem(), focused);
        QCOMPARE(focused->mapToScene({}).y(), y);
    }

    void searchIsThereForLongListsOnly()
    {
        open("shop", "printers");
        QCOMPARE(searchField(), nullptr);
        view().setPage(QStringLiteral("overview"));
        QVERIFY(m_stage->enter(QStringLiteral("crowded")));
        view().setPage(QStringLiteral("printers"));
        QTRY_VERIFY(searchField());
        searchField()->setProperty("text", QStringLiteral("bt-58 4"));
        QTRY_COMPARE(visibleWith(root(), QStringLiteral("BT-58 4")).size(), 1);
        QVERIFY(focus(searchField()));
        QTest::keyClick(m_window->window(), Qt::Key_Down);
        QCOMPARE(m_window->window()->activeFocusItem(), control(QStringLiteral("BT-58 4")));
        searchField()->setProperty("text", QStringLiteral("zzz"));
        QTRY_VERIFY(visibleWith(root(), testPrint).isEmpty());
        QVERIFY(searchField()); // to empty it again
    }

    void printersCanBeAddedWithoutTheService()
    {
        open("stopped", "printers");
        press(control(QStringLiteral("إضافة طابعة")));
        QVERIFY(view().isAdding());
    }

private:
    void open(const char *situation, const char *page)
    {
        QVERIFY(m_stage->enter(QString::fromLatin1(situation)));
        m_window->show({});
        QVERIFY(QTest::qWaitForWindowActive(m_window->window()));
        view().setPage(QString::fromLatin1(page));
        QVERIFY(!m_window->window()->grabWindow().isNull());
    }
    QQuickItem *control(const QString &text)
    {
        const QList<QQuickItem *> found = visibleWith(root(), text);
        if (found.isEmpty())
            qFatal("there is no %s to press", qPrintable(text));
        return found.first();
    }
    QQuickItem *searchField()
    {
        return visibleWith(root(), QStringLiteral("ابحث عن طابعة"), "placeholderText").value(0);
    }
    void press(QQuickItem *item)
    {
        QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(item);
        QVERIFY(interface && interface->actionInterface());
        QVERIFY(!interface->text(QAccessible::Name).isEmpty());
        interface->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    }
    bool focus(QQuickItem *item)
    {
        item->forceActiveFocus(Qt::TabFocusReason);
        return m_window->window()->activeFocusItem() == item;
    }
    static QPoint centre(QQuickItem *item) { return item->mapToScene(item->boundingRect().center()).toPoint(); }
    MainView &view() { return UiContext::of(m_window->engine()).mainView(); }
    QQuickItem *root() { return m_window->window()->contentItem(); }

    std::unique_ptr<Warnings> m_warnings;
    ManualClock m_clock;
    std::unique_ptr<Stage> m_stage;
    std::unique_ptr<QmlWindow> m_window;
};

ZEMRAK_TEST(firstpages, FirstPagesTest, QApplication)
#include "tst_firstpages.moc"
