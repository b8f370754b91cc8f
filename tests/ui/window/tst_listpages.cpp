// The pages of sites, jobs and alerts: what presses and keys do there, and what a poll must leave alone.
#include "support/testmain.h"
#include "support/wiredata.h"
#include "ui/window/windowtest.h"

#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

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

class ListPagesTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
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
        QVERIFY(itemsWith(root(), "statusText", QStringLiteral("تمت")).size() < 40); // only what is in sight exists

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
        QQuickItem *search = itemWith(root(), "placeholderText", QStringLiteral("ابحث في الوظائف"));
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

    void treeHoldsWhatTheListHolds_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("list"); // of the state or of the alerts
        QTest::addColumn<QString>("key");
        QTest::addColumn<QByteArray>("property");
        const auto row = [](const char *page, const char *list, const char *key, const QByteArray &property) {
            QTest::newRow(page) << QString::fromLatin1(page) << QString::fromLatin1(list) << QString::fromLatin1(key)
                                << property;
        };
        row("printers", "printers", "id", "printerId");
        row("sites", "allowedOrigins", "", "origin");
        row("jobs", "recentJobs", "id", "jobId");
        row("alerts", "alerts", "title", "title");
    }
    void treeHoldsWhatTheListHolds()
    {
        QFETCH(QString, page);
        QFETCH(QString, list);
        QFETCH(QString, key);
        QFETCH(QByteArray, property);
        QAccessible::setActive(true);
        open("shop", page.toLatin1());
        // Grown in front, turned round, shrunk, grown again: rows are made, moved, put by and used again.
        const QList<std::function<QJsonArray(QJsonArray)>> steps{
            [](const QJsonArray &all) { return all; },
            [&key](QJsonArray all) {
                for (const char *name : {"a", "b", "c"}) {
                    QJsonObject entry = all.first().toObject();
                    entry.insert(QStringLiteral("id"), QLatin1String(name));
                    entry.insert(key, QLatin1String(name));
                    all.prepend(key.isEmpty() ? QJsonValue(QLatin1String(name)) : QJsonValue(entry));
                }
                return all;
            },
            [](const QJsonArray &all) {
                QJsonArray turned;
                for (const QJsonValue &entry : all)
                    turned.prepend(entry);
                return turned;
            },
            [](const QJsonArray &all) { return QJsonArray{all.first()}; },
            [](const QJsonArray &all) { return all; },
        };
        for (const auto &step : steps) {
            QStringList expected;
            poll(changed("shop", [&](QJsonObject &state, QJsonObject &alerts) {
                QJsonObject &holder = page == QLatin1String("alerts") ? alerts : state;
                const QJsonArray entries = step(holder.value(list).toArray());
                holder.insert(list, entries);
                for (const bool over : {false, true}) { // alerts stand in two groups
                    for (const QJsonValue &entry : entries) {
                        if (over == entry[QLatin1String("resolvedAt")].isDouble())
                            expected.append(key.isEmpty() ? entry.toString() : entry[key].toString());
                    }
                }
            }));
            // Rows far out of sight need not be there.
            const auto holdsThem = [&] {
                const QStringList found = rowsInTree(property);
                return found == expected.mid(0, found.size())
                    && found.size() >= std::min<qsizetype>(expected.size(), 4);
            };
            QTRY_VERIFY2(holdsThem(), qPrintable(rowsInTree(property).join(u' ')));
        }
    }

    void siteIsAddedByEnterAndKeptWhenRefused()
    {
        open("shop", "sites");
        const QString typed = QStringLiteral("pos.new.example");
        QQuickItem *field = itemWith(root(), "name", QStringLiteral("عنوان الموقع"));
        QVERIFY(field);
        field->forceActiveFocus(Qt::TabFocusReason);
        for (const QChar letter : typed)
            QTest::keyClick(window(), letter.toLatin1());
        QTest::keyClick(window(), Qt::Key_Return);
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/origins/add").size(), 1);
        QCOMPARE(m_stage->server().requestsTo("/admin/origins/add").first().body,
            QByteArray("{\"origin\":\"pos.new.example\"}"));
        QTRY_VERIFY(!session().sites()->isAdding());
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
        QCOMPARE(itemsWith(root(), "tag", QStringLiteral("أُضيف يدويًا")).size(), 2); // all but the service's own
        const QList<QQuickItem *> bins = itemsWith(root(), "symbol", QStringLiteral("trash"));
        QCOMPARE(bins.size(), 2);
        for (const bool sure : {false, true}) {
            click(bins.first());
            QTRY_VERIFY(!itemsWith(root(), "text", QStringLiteral("إلغاء")).isEmpty());
            QTRY_COMPARE(window()->activeFocusItem(), itemWith(root(), "text", QStringLiteral("إلغاء")));
            QVERIFY(m_stage->server().requestsTo("/admin/origins/remove").isEmpty());
            click(itemWith(root(), "text", sure ? QStringLiteral("حذف") : QStringLiteral("إلغاء")));
            QTRY_VERIFY(itemsWith(root(), "text", QStringLiteral("إلغاء")).isEmpty());
        }
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/origins/remove").size(), 1);
        QVERIFY(m_stage->server().requestsTo("/admin/origins/remove").first().body.contains("orders.shop.example"));

        QCOMPARE(itemsWith(root(), "paired", true).size(), 2); // the service's own, too
        click(itemWith(root(), "text", QStringLiteral("إلغاء الاقتران")));
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/revoke").size(), 1);
        QCOMPARE(m_stage->server().requestsTo("/admin/revoke").first().body, QByteArray("{\"id\":\"s1\"}"));
    }

    void manySitesStillLeadToTheField()
    {
        open("crowded", "sites");
        click(itemWith(root(), "text", QStringLiteral("إضافة موقع")));
        QQuickItem *field = itemWith(root(), "name", QStringLiteral("عنوان الموقع"));
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
        QVERIFY(itemsWith(root(), "title", QStringLiteral("لا توجد مشاكل الآن")).isEmpty());
        QCOMPARE(itemsWith(root(), "countBadge", QStringLiteral("تكرر 3 مرة")).size(), 1);
        QCOMPARE(itemsWith(root(), "resolved", true).size(), 1);

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
        QQuickItem *hint = itemWith(root(), "title", QStringLiteral("لا توجد مشاكل الآن"));
        QVERIFY(hint && hint->height() > 100); // and the history under it
        QTRY_VERIFY(hint->mapToScene({}).y() > 0);

        QVERIFY(m_stage->enter(QStringLiteral("quiet")));
        QTRY_COMPARE(headings(), QStringList());
        QVERIFY(!itemsWith(root(), "title", QStringLiteral("لا توجد مشاكل الآن")).isEmpty());
    }

    void alertsButtonsDoTheirs()
    {
        open("shop", "alerts");
        click(itemWith(root(), "text", QStringLiteral("تحديد الكل كمقروء")));
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/alerts/read").size(), 1);
        click(itemWith(root(), "text", QStringLiteral("مسح السجل")));
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/alerts/clear").size(), 1);

        QQuickItem *scan = itemWith(root(), "actionTitle", QStringLiteral("فحص الاتصال"));
        QVERIFY(scan);
        click(itemWith(scan, "text", QStringLiteral("فحص الاتصال")));
        QCOMPARE(view().page(), QStringLiteral("overview"));
        QVERIFY(m_stage->agent().isScanning());
    }

    void timesMoveOnOnlyWhileTheyCanBeSeen()
    {
        open("shop", "jobs");
        const QString before = QStringLiteral("قبل دقيقة واحدة");
        QVERIFY(!itemsWith(root(), "text", before).isEmpty());
        m_clock.advance(120s);
        QTRY_VERIFY(itemsWith(root(), "text", before).isEmpty());
        QVERIFY(session().clock()->isActive());
        window()->setWindowState(Qt::WindowMinimized);
        QTRY_VERIFY(!session().clock()->isActive());
        window()->setWindowState(Qt::WindowNoState);
        QTRY_VERIFY(session().clock()->isActive());
    }

private:
    void poll(const Answers &answers)
    {
        QVERIFY(m_stage->enter({.name = {}, .title = {}, .answers = [answers] { return answers; }}));
    }
    void click(QQuickItem *item) { QTest::mouseClick(window(), Qt::LeftButton, {}, centreOf(item)); }
    // What `property` holds in the rows that assistive technology finds in the list, in its order.
    QStringList rowsInTree(const QByteArray &property)
    {
        QStringList found;
        QAccessibleInterface *tree = QAccessible::queryAccessibleInterface(
            itemsWhere(root(), [](const QQuickItem *item) { return item->inherits("QQuickListView"); }).value(0));
        for (int i = 0; tree && i < tree->childCount(); ++i) {
            const QObject *item = tree->child(i)->object();
            const QVariant value = item->parent() ? item->parent()->property(property) : QVariant();
            if (value.isValid())
                found.append(value.toString());
        }
        return found;
    }
    QQuickItem *shownList() { return itemWith(root(), "keyNavigationEnabled", true); }
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
        for (const QQuickItem *item : itemsWith(root(), "weight", int(QFont::Bold))) {
            const QString text = item->property("value").toString();
            if (item->parentItem()->property("section").isValid())
                texts.append(text);
        }
        std::sort(texts.begin(), texts.end(), std::greater<>());
        return texts;
    }
};

ZEMRAK_TEST(listpages, ListPagesTest, QApplication)
#include "tst_listpages.moc"
