// The pages of sites, jobs and alerts: what presses and keys do there, and what a poll must leave alone.
#include "app/agent.h"
#include "demo/stage.h"
#include "support/warnings.h"
#include "support/manualclock.h"
#include "support/testmain.h"
#include "support/wiredata.h"
#include "ui/window/shell/qmlwindow.h"
#include "ui/window/shell/uicontext.h"

#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <algorithm>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

// In the order in which they stand in the scene; also those a list keeps ready out of sight.
QList<QQuickItem *> all(QQuickItem *item, const char *property, const QVariant &value)
{
    QList<QQuickItem *> found;
    if (item->isVisible() && item->property(property) == value)
        found.append(item);
    for (QQuickItem *child : item->childItems())
        found << all(child, property, value);
    return found;
}

Answers changed(const char *situation, const std::function<void(QJsonObject &state, QJsonObject &alerts)> &change)
{
    Answers answers = findSituation(QString::fromLatin1(situation))->answers();
    QJsonObject state = QJsonDocument::fromJson(answers.value("/admin/state")).object();
    QJsonObject alerts = QJsonDocument::fromJson(answers.value("/admin/alerts")).object();
    change(state, alerts);
    answers.insert("/admin/state", toJson(state));
    answers.insert("/admin/alerts", toJson(alerts));
    return answers;
}

} // namespace

class ListPagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_warnings = std::make_unique<Warnings>(); }

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

    void pollLeavesTheViewWhereItIs()
    {
        open("crowded", "jobs");
        QQuickItem *list = shownList();
        list->forceActiveFocus(Qt::TabFocusReason); // a row that was chosen does not draw the view back to it
        QTest::keyClick(window(), Qt::Key_Down);
        list->setProperty("contentY", 30000);
        settle();
        const QString seen = topRow(list)->property("jobId").toString();
        const double place = topRow(list)->mapToScene({}).y();
        QVERIFY(all(root(), "statusText", QStringLiteral("تمت")).size() < 40); // only what is in sight exists

        poll(changed("crowded", [](QJsonObject &state, QJsonObject &) {
            QJsonArray jobs = state.value(QStringLiteral("recentJobs")).toArray();
            jobs.prepend(jobs.takeAt(jobs.size() - 1)); // moved
            QJsonObject added = jobs.at(0).toObject();
            added.insert(QStringLiteral("id"), QStringLiteral("job-new"));
            jobs.prepend(added);
            state.insert(QStringLiteral("recentJobs"), jobs);
        }));
        settle();
        QCOMPARE(topRow(list)->property("jobId").toString(), seen);
        QCOMPARE(topRow(list)->mapToScene({}).y(), place);
        list->setProperty("contentY", list->property("originY"));
        settle();
        QCOMPARE(topRow(list)->property("jobId").toString(), QStringLiteral("job-new"));
    }

    void listIsOneStopOfTheTabKey()
    {
        open("crowded", "jobs");
        QQuickItem *search = all(root(), "placeholderText", QStringLiteral("ابحث في الوظائف")).value(0);
        QVERIFY(search);
        search->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(window(), Qt::Key_Down); // into what was found
        QCOMPARE(focusedRow("jobId"), QStringLiteral("job-1042 1"));
        QTest::keyClick(window(), Qt::Key_Down);
        QCOMPARE(focusedRow("jobId"), QStringLiteral("job-1041 2"));
        QTest::keySequence(window(), QKeySequence::Copy);
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("job-1041 2"));
        QTest::keyClick(window(), Qt::Key_Tab); // to the identifier in that row
        QCOMPARE(window()->activeFocusItem()->property("value").toString(), QStringLiteral("job-1041 2"));
        QTest::keyClick(window(), Qt::Key_Tab);
        QCOMPARE(focusedRow("jobId"), QString());
        QTest::keyClick(window(), Qt::Key_Backtab);
        QTest::keyClick(window(), Qt::Key_Backtab);
        QCOMPARE(focusedRow("jobId"), QStringLiteral("job-1041 2"));
        QTest::keyClick(window(), Qt::Key_Backtab);
        QCOMPARE(window()->activeFocusItem(), search);
        for (int i = 0; i < 30; ++i) // row by row, out of the part that was in sight at first
            QTest::keyClick(window(), i == 0 ? Qt::Key_Tab : Qt::Key_Down);
        QVERIFY(focusedRow("jobId") != QString());
        const double y = window()->activeFocusItem()->mapToScene({}).y();
        QVERIFY(y > 0 && y < window()->height());
    }

    void siteIsAddedByEnterAndKeptWhenRefused()
    {
        open("shop", "sites");
        const QString typed = QStringLiteral("pos.new.example");
        QQuickItem *field = all(root(), "name", QStringLiteral("عنوان الموقع")).value(0);
        QVERIFY(field);
        field->forceActiveFocus(Qt::TabFocusReason);
        for (const QChar letter : typed)
            QTest::keyClick(window(), letter.toLatin1());
        QTest::keyClick(window(), Qt::Key_Return);
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/origins/add").size(), 1);
        QCOMPARE(m_stage->server().requestsTo("/admin/origins/add").first().body,
            QByteArray("{\"origin\":\"pos.new.example\"}"));
        QTRY_VERIFY(!presenters().sites()->isAdding());
        QCOMPARE(field->property("text").toString(), typed);
        QVERIFY(field->property("activeFocus").toBool());

        Answers answers = findSituation(QStringLiteral("shop"))->answers();
        answers.insert("/admin/origins/add", "{\"origin\":\"x\"}");
        poll(answers);
        QTest::keyClick(window(), Qt::Key_Enter);
        QTRY_COMPARE(field->property("text").toString(), QString());
        QVERIFY(field->property("activeFocus").toBool()); // for the next one
        QTest::keyClick(window(), 'a');
        QCOMPARE(field->property("text").toString(), QStringLiteral("a"));
    }

    void siteIsDeletedOnlyAfterTheAnswer()
    {
        open("shop", "sites");
        QCOMPARE(all(root(), "tag", QStringLiteral("أُضيف يدويًا")).size(), 2); // all but the service's own
        const QList<QQuickItem *> bins = all(root(), "symbol", QStringLiteral("trash"));
        QCOMPARE(bins.size(), 2);
        for (const bool sure : {false, true}) {
            click(bins.first());
            QTRY_VERIFY(!all(root(), "text", QStringLiteral("إلغاء")).isEmpty());
            QTRY_COMPARE(window()->activeFocusItem(), all(root(), "text", QStringLiteral("إلغاء")).first());
            QVERIFY(m_stage->server().requestsTo("/admin/origins/remove").isEmpty());
            click(all(root(), "text", sure ? QStringLiteral("حذف") : QStringLiteral("إلغاء")).first());
            QTRY_VERIFY(all(root(), "text", QStringLiteral("إلغاء")).isEmpty());
        }
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/origins/remove").size(), 1);
        QVERIFY(m_stage->server().requestsTo("/admin/origins/remove").first().body.contains("orders.shop.example"));

        QCOMPARE(all(root(), "paired", true).size(), 2); // the service's own, too
        click(all(root(), "text", QStringLiteral("إلغاء الاقتران")).first());
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/revoke").size(), 1);
        QCOMPARE(m_stage->server().requestsTo("/admin/revoke").first().body, QByteArray("{\"id\":\"s1\"}"));
    }

    void manySitesStillLeadToTheField()
    {
        open("crowded", "sites");
        click(all(root(), "text", QStringLiteral("إضافة موقع")).first());
        QQuickItem *field = all(root(), "name", QStringLiteral("عنوان الموقع")).value(0);
        QVERIFY(field && field->property("activeFocus").toBool());
        const double y = field->mapToScene({}).y();
        QVERIFY(y > 0 && y + field->height() < window()->height());
    }

    void alertsAreReadByWhoeverLooksAtThem()
    {
        const auto marked = [this] { return m_stage->server().requestsTo("/admin/alerts/read").size(); };
        open("shop", "alerts");
        m_clock.advance(1400ms);
        view().setPage(QStringLiteral("jobs"));
        m_clock.advance(5s);
        view().setPage(QStringLiteral("alerts"));
        m_clock.advance(1000ms);
        window()->setWindowState(Qt::WindowMinimized); // nobody looks at that
        m_clock.advance(5s);
        settle();
        QCOMPARE(marked(), 0);
        window()->setWindowState(Qt::WindowNoState);
        m_clock.advance(1500ms);
        QTRY_COMPARE(marked(), 1);
        m_clock.advance(5s);
        settle();
        QCOMPARE(marked(), 1);

        view().setPage(QStringLiteral("jobs"));
        view().setPage(QStringLiteral("alerts"));
        m_window->close();
        m_clock.advance(5s);
        settle();
        QCOMPARE(marked(), 1);
    }

    void alertsStandInTwoGroups()
    {
        open("shop", "alerts");
        QCOMPARE(headings(), (QStringList{QStringLiteral("تحتاج انتباهك (3)"), QStringLiteral("السجل")}));
        QVERIFY(all(root(), "title", QStringLiteral("لا توجد مشاكل الآن")).isEmpty());
        QCOMPARE(all(root(), "countBadge", QStringLiteral("تكرر 3 مرة")).size(), 1);
        QCOMPARE(all(root(), "resolved", true).size(), 1);

        poll(changed("shop", [](QJsonObject &, QJsonObject &alerts) {
            QJsonArray over;
            for (const QJsonValue &value : alerts.value(QStringLiteral("alerts")).toArray()) {
                QJsonObject alert = value.toObject();
                alert.insert(QStringLiteral("resolvedAt"), 1.7e12);
                over.append(alert);
            }
            alerts.insert(QStringLiteral("alerts"), over);
        }));
        QTRY_COMPARE(headings(), QStringList{QStringLiteral("السجل")});
        QQuickItem *hint = all(root(), "title", QStringLiteral("لا توجد مشاكل الآن")).value(0);
        QVERIFY(hint && hint->height() > 100); // and the history under it
        QTRY_VERIFY(hint->mapToScene({}).y() > 0);

        QVERIFY(m_stage->enter(QStringLiteral("quiet")));
        QTRY_COMPARE(headings(), QStringList());
        QVERIFY(!all(root(), "title", QStringLiteral("لا توجد مشاكل الآن")).isEmpty());
    }

    void alertsButtonsDoTheirs()
    {
        open("shop", "alerts");
        click(all(root(), "text", QStringLiteral("تحديد الكل كمقروء")).first());
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/alerts/read").size(), 1);
        click(all(root(), "text", QStringLiteral("مسح السجل")).first());
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/alerts/clear").size(), 1);

        QQuickItem *scan = all(root(), "actionTitle", QStringLiteral("فحص الاتصال")).value(0);
        QVERIFY(scan);
        click(all(scan, "text", QStringLiteral("فحص الاتصال")).first());
        QCOMPARE(view().page(), QStringLiteral("overview"));
        QVERIFY(m_stage->agent().isScanning());
    }

    void timesMoveOnOnlyWhileTheyCanBeSeen()
    {
        open("shop", "jobs");
        const QString before = QStringLiteral("قبل دقيقة واحدة");
        QVERIFY(!all(root(), "text", before).isEmpty());
        m_clock.advance(120s);
        QTRY_VERIFY(all(root(), "text", before).isEmpty());
        QVERIFY(presenters().clock()->isActive());
        window()->setWindowState(Qt::WindowMinimized);
        QTRY_VERIFY(!presenters().clock()->isActive());
        window()->setWindowState(Qt::WindowNoState);
        QTRY_VERIFY(presenters().clock()->isActive());
    }

private:
    void open(const char *situation, const char *page)
    {
        QVERIFY(m_stage->enter(QString::fromLatin1(situation)));
        m_window->show({});
        QVERIFY(QTest::qWaitForWindowActive(window()));
        view().setPage(QString::fromLatin1(page));
        settle();
    }
    void poll(const Answers &answers)
    {
        QVERIFY(m_stage->enter({.name = {}, .title = {}, .answers = [answers] { return answers; }}));
    }
    // Layouts and views come to rest when a picture is drawn.
    void settle()
    {
        QCoreApplication::processEvents();
        QVERIFY(window() == nullptr || !window()->grabWindow().isNull());
    }
    void click(QQuickItem *item)
    {
        const QPoint centre = item->mapToScene(item->boundingRect().center()).toPoint();
        QTest::mouseClick(window(), Qt::LeftButton, {}, centre);
    }
    QQuickItem *shownList() { return all(root(), "keyNavigationEnabled", true).value(0); }
    static QQuickItem *topRow(QQuickItem *list)
    {
        QQuickItem *row = nullptr;
        const double y = list->property("contentY").toDouble() + 10;
        QMetaObject::invokeMethod(
            list, "itemAt", Q_RETURN_ARG(QQuickItem *, row), Q_ARG(double, 100), Q_ARG(double, y));
        return row;
    }
    // What `property` holds in the row that has the keyboard itself; none has: empty.
    QString focusedRow(const char *property)
    {
        const QQuickItem *focused = window()->activeFocusItem();
        return focused && focused->parentItem() ? focused->parentItem()->property(property).toString() : QString();
    }
    QStringList headings()
    {
        QStringList texts;
        for (const QQuickItem *item : all(root(), "weight", int(QFont::Bold))) {
            const QString text = item->property("value").toString();
            if (item->parentItem()->property("section").isValid())
                texts.append(text);
        }
        std::sort(texts.begin(), texts.end(), std::greater<>());
        return texts;
    }
    QQuickWindow *window() { return m_window->window(); }
    MainView &view() { return UiContext::of(m_window->engine()).mainView(); }
    Presenters &presenters() { return UiContext::of(m_window->engine()).presenters(); }
    QQuickItem *root() { return window()->contentItem(); }

    std::unique_ptr<Warnings> m_warnings;
    ManualClock m_clock;
    std::unique_ptr<Stage> m_stage;
    std::unique_ptr<QmlWindow> m_window;
};

ZEMRAK_TEST(listpages, ListPagesTest, QApplication)
#include "tst_listpages.moc"
