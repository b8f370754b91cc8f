// The overview and the page of printers: what presses and keys do there.
#include "support/testmain.h"
#include "ui/window/windowtest.h"

#include <QApplication>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

const QString testPrint = QStringLiteral("طباعة تجربة");

// Those that the keyboard reaches.
QList<QQuickItem *> visibleWith(QQuickItem *item, const QString &text, const char *property = "text")
{
    return itemsWhere(item, [&](const QQuickItem *candidate) {
        // Of a list only the chosen row is a stop of the Tab key.
        return (candidate->activeFocusOnTab() || candidate->inherits("QQuickAbstractButton"))
            && candidate->property(property).toString() == text;
    });
}

} // namespace

class FirstPagesTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void ringStartsACheckAndFillsWithIt()
    {
        open("shop", "overview");
        QQuickItem *ring = control(QStringLiteral("فحص الاتصال"));
        pressAccessibly(ring);
        QVERIFY(m_stage->agent().isScanning());
        QCOMPARE(ring->property("tone").value<QColor>(), QColor(0xc084fc));
        QVERIFY(control(QStringLiteral("طابعات متصلة"))); // nothing else went away
        m_clock.advance(600ms);
        m_clock.advance(700ms);
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/scan").size(), 1);
        QTest::keyClick(window(), Qt::Key_Return); // while it runs, another press changes nothing
        const auto isOver = [this] {
            m_clock.advance(100ms);
            return !m_stage->agent().isScanning();
        };
        QTRY_VERIFY(isOver());
        QCOMPARE(m_stage->server().requestsTo("/admin/scan").size(), 1);
        QTRY_COMPARE(ring->property("tone").value<QColor>(), QColor(0x16a34a));
    }

    void ringWindsOnFromStageToStage()
    {
        m_window->appearance().overrideReducedMotion(false);
        open("shop", "overview");
        for (int check = 0; check < 2; ++check) { // the second does not begin where the first ended
            pressAccessibly(control(QStringLiteral("فحص الاتصال")));
            QQuickItem *ring = itemOfType(root(), "OverviewProgress");
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
            pressAccessibly(control(counter));
            QCOMPARE(view().page(), QLatin1String(page));
        }
    }

    void cardOpensSettingsHoweverItIsPressed()
    {
        open("shop", "printers");
        QQuickItem *card = control(QStringLiteral("المطبخ"));
        const std::pair<const char *, std::function<void()>> presses[] = {
            {"mouse", [&] { QTest::mouseClick(window(), Qt::LeftButton, {}, centreOf(card)); }},
            {"assistive technology", [&] { pressAccessibly(card); }},
            {"space", [&] { QTest::keyClick(window(), Qt::Key_Space); }},
            {"return", [&] { QTest::keyClick(window(), Qt::Key_Return); }},
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
            QTest::mouseClick(window(), Qt::LeftButton, {}, centreOf(button));
        QTRY_COMPARE(m_stage->agent().toast(), QStringLiteral("تم إرسال طباعة التجربة"));
        QCOMPARE(m_stage->server().requestsTo("/admin/test").size(), 1);
        m_clock.advance(Commands::oneWish);
        QVERIFY(m_stage->server().requestsTo("/admin/test").first().body.contains("net-2"));
        QVERIFY(focus(card));
        QTest::keyClick(window(), Qt::Key_Tab);
        QCOMPARE(window()->activeFocusItem(), button);
        QTest::keyClick(window(), Qt::Key_Return);
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/test").size(), 2);
        QCOMPARE(view().editing(), QString());
        QTest::keyClick(window(), Qt::Key_Tab); // out of the list, which is one stop
        QVERIFY(
            !window()->activeFocusItem() || window()->activeFocusItem()->property("text") != QStringLiteral("BT-58"));
    }

    void arrowsWalkALongList()
    {
        open("crowded", "printers");
        QVERIFY(visibleWith(root(), testPrint).size() < 40); // of 500
        QVERIFY(focus(control(QStringLiteral("كاشير 1"))));
        for (int i = 0; i < 30; ++i)
            QTest::keyClick(window(), Qt::Key_Down);
        QQuickItem *card = window()->activeFocusItem();
        QCOMPARE(card->property("text").toString(), QStringLiteral("Bar 31"));
        QVERIFY(card->property("visualFocus").toBool());
        QVERIFY(
            QRectF(0, 0, window()->width(), window()->height()).contains(card->mapRectToScene(card->boundingRect())));
        QTest::keyClick(window(), Qt::Key_Up);
        QVERIFY(window()->activeFocusItem() != card);
        // A poll that changes nothing leaves both where they are.
        const QQuickItem *focused = window()->activeFocusItem();
        const double y = focused->mapToScene({}).y();
        QVERIFY(m_stage->enter(QStringLiteral("crowded")));
        QCOMPARE(window()->activeFocusItem(), focused);
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
        QTest::keyClick(window(), Qt::Key_Down);
        QCOMPARE(window()->activeFocusItem(), control(QStringLiteral("BT-58 4")));
        searchField()->setProperty("text", QStringLiteral("zzz"));
        QTRY_VERIFY(visibleWith(root(), testPrint).isEmpty());
        QVERIFY(searchField()); // to empty it again
    }

    void printersCanBeAddedWithoutTheService()
    {
        open("stopped", "printers");
        pressAccessibly(control(QStringLiteral("إضافة طابعة")));
        QVERIFY(view().isAdding());
    }

private:
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
    bool focus(QQuickItem *item)
    {
        item->forceActiveFocus(Qt::TabFocusReason);
        return window()->activeFocusItem() == item;
    }
};

ZEMRAK_TEST(firstpages, FirstPagesTest, QApplication)
#include "tst_firstpages.moc"
