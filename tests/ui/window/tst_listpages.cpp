// The pages of sites, jobs and alerts: what presses and keys do there, and what a poll must leave alone.
#include "support/rows.h"
#include "support/testmain.h"
#include "ui/window/windowtest.h"

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class ListPagesTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void pollLeavesTheViewWhereItIs()
    {
        open("crowded", "jobs");
        QQuickItem *list = itemWith(root(), "keyNavigationEnabled", true);
        list->forceActiveFocus(Qt::TabFocusReason); // a row that was chosen does not draw the view back to it
        key(Qt::Key_Down);
        list->setProperty("contentY", 30000);
        settle();
        const QQuickItem *row = topRow(list);
        const QString seen = row->property("jobId").toString();
        const double place = row->mapToScene({}).y();
        QVERIFY(count("تمت", "statusText") < 40); // only what is in sight exists

        enterWith("crowded", "recentJobs", [](QJsonArray jobs) {
            jobs.prepend(jobs.takeAt(jobs.size() - 1)); // moved
            QJsonObject added = jobs.at(0).toObject();
            added[u"id"] = u"job-new"_s;
            jobs.prepend(added);
            return jobs;
        });
        settle();
        QCOMPARE(topRow(list)->property("jobId").toString(), seen);
        QCOMPARE(topRow(list)->mapToScene({}).y(), place);
        list->setProperty("contentY", list->property("originY"));
        settle();
        QCOMPARE(topRow(list)->property("jobId").toString(), u"job-new"_s);
    }

    void listIsOneStopOfTheTabKey()
    {
        open("crowded", "jobs");
        QQuickItem *search = control("ابحث في الوظائف");
        focus(search);
        key(Qt::Key_Down); // into what was found
        QCOMPARE(focusedJob(), u"job-1042 1"_s);
        key(Qt::Key_Down);
        QTest::keySequence(window(), QKeySequence::Copy);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"job-1041 2"_s);
        key(Qt::Key_Tab); // to the identifier in that row
        QCOMPARE(focusItem()->property("value").toString(), u"job-1041 2"_s);
        key(Qt::Key_Tab);
        QCOMPARE(focusedJob(), QString());
        key(Qt::Key_Backtab, {}, 2);
        QCOMPARE(focusedJob(), u"job-1041 2"_s);
        key(Qt::Key_Backtab);
        QCOMPARE(focusItem(), search);
        key(Qt::Key_Tab);
        key(Qt::Key_Down, {}, 29); // row by row, out of the part that was in sight at first
        QVERIFY(!focusedJob().isEmpty() && isInSight(focusItem()));
    }

    void treeHoldsWhatTheListHolds()
    {
        using Step = std::function<QJsonArray(QJsonArray)>;
        // Page, the list of the state or of the alerts, the key of an entry and the property of its row.
        for (const QStringList &row : rowsOf(R"(
                printers | printers       | id    | printerId
                sites    | allowedOrigins |       | origin
                jobs     | recentJobs     | id    | jobId
                alerts   | alerts         | title | title)")) {
            const QString key = row[2];
            open("shop", row[0].toLatin1());
            // Grown in front, turned round, shrunk, grown again: rows are made, moved, put by and used again.
            const Step same = [](const QJsonArray &all) { return all; };
            const Step grown = [&key](QJsonArray all) {
                for (const char *name : {"a", "b", "c"}) {
                    QJsonObject entry = all.first().toObject();
                    entry[u"id"] = QLatin1String(name);
                    entry[key] = QLatin1String(name);
                    all.prepend(key.isEmpty() ? QJsonValue(QLatin1String(name)) : QJsonValue(entry));
                }
                return all;
            };
            const Step turned = [](const QJsonArray &all) {
                QJsonArray other;
                for (const QJsonValue &entry : all)
                    other.prepend(entry);
                return other;
            };
            const Step shrunk = [](const QJsonArray &all) { return QJsonArray{all.first()}; };
            for (const Step &step : {same, grown, turned, shrunk, same}) {
                QStringList expected;
                enterWith("shop", row[1].toLatin1(), [&](const QJsonArray &all) {
                    const QJsonArray entries = step(all);
                    for (const bool isOver : {false, true}) { // alerts stand in two groups
                        for (const QJsonValue &entry : entries) {
                            if (isOver == entry[u"resolvedAt"].isDouble())
                                expected.append(key.isEmpty() ? entry.toString() : entry[key].toString());
                        }
                    }
                    return entries;
                });
                const auto holdsThem = [&] { // rows far out of sight need not be there
                    const QStringList found = rowsInTree(row[3].toLatin1());
                    return found == expected.mid(0, found.size())
                        && found.size() >= std::min<qsizetype>(expected.size(), 4);
                };
                QTRY_VERIFY2(holdsThem(), qPrintable(row[0]));
            }
            m_window->close();
        }
    }

    void siteIsAddedByEnterAndKeptWhenRefused()
    {
        open("shop", "sites");
        QQuickItem *field = control("عنوان الموقع");
        focus(field);
        type("pos.new.example");
        key(Qt::Key_Return);
        QTRY_COMPARE(body("/admin/origins/add"), QByteArray(R"({"origin":"pos.new.example"})"));
        QTRY_VERIFY(!session().sites()->isAdding());
        QCOMPARE(field->property("text").toString(), u"pos.new.example"_s);
        QCOMPARE(focusItem(), field);

        enter("shop", {{"/admin/origins/add", R"({"origin":"x"})"}});
        key(Qt::Key_Enter);
        QTRY_COMPARE(field->property("text").toString(), QString());
        type("a"); // the next one
        QCOMPARE(field->property("text").toString(), u"a"_s);
    }

    void siteIsDeletedOnlyAfterTheAnswer()
    {
        open("shop", "sites");
        QCOMPARE(count("أُضيف يدويًا", "tag"), 2); // all but the service's own
        QQuickItem *bin = find("trash", "symbol");
        QCOMPARE(count("trash", "symbol"), 2);
        for (const char *answer : {"إلغاء", "حذف"}) {
            click(bin);
            QTRY_COMPARE(focused(), u"إلغاء"_s);
            QCOMPARE(sent("/admin/origins/remove"), 0);
            click(find(answer));
            QTRY_VERIFY(!find("إلغاء"));
        }
        QTRY_COMPARE(sent("/admin/origins/remove"), 1);
        QVERIFY(body("/admin/origins/remove").contains("orders.shop.example"));
        QCOMPARE(itemsWith(root(), "paired", true).size(), 2); // the service's own, too
        click(find("إلغاء الاقتران"));
        QTRY_COMPARE(body("/admin/revoke"), QByteArray(R"({"id":"s1"})"));
    }

    void manySitesStillLeadToTheField()
    {
        open("crowded", "sites");
        click(find("إضافة موقع"));
        QCOMPARE(focused(), u"عنوان الموقع"_s);
        QVERIFY(isInSight(focusItem()));
    }

    void alertsAreReadByWhoeverLooksAtThem()
    {
        const auto page = [this](const char *id) { view().setPage(QLatin1String(id)); };
        open("shop", "alerts");
        m_clock.advance(1400ms);
        page("jobs");
        m_clock.advance(5s);
        page("alerts");
        m_clock.advance(1000ms);
        window()->setWindowState(Qt::WindowMinimized); // where nothing can be read
        m_clock.advance(5s);
        settle();
        QCOMPARE(sent("/admin/alerts/read"), 0);
        window()->setWindowState(Qt::WindowNoState);
        m_clock.advance(1500ms);
        QTRY_COMPARE(sent("/admin/alerts/read"), 1);
        page("jobs");
        page("alerts");
        m_window->close();
        m_clock.advance(5s);
        settle();
        QCOMPARE(sent("/admin/alerts/read"), 1);
    }

    void alertsStandInTwoGroups()
    {
        open("shop", "alerts");
        QCOMPARE(headings(), u"تحتاج انتباهك (3)|السجل"_s);
        QVERIFY(!find("لا توجد مشاكل الآن", "title"));
        QCOMPARE(count("تكرر 3 مرة", "countBadge"), 1);
        QCOMPARE(itemsWith(root(), "resolved", true).size(), 1);

        enterWith("shop", "alerts", [](const QJsonArray &alerts) {
            QJsonArray over;
            for (const QJsonValue &value : alerts) {
                QJsonObject alert = value.toObject();
                alert[u"resolvedAt"] = 1.7e12;
                over.append(alert);
            }
            return over;
        });
        QTRY_COMPARE(headings(), u"السجل"_s);
        const QQuickItem *hint = find("لا توجد مشاكل الآن", "title");
        QVERIFY(hint && hint->height() > 100); // and the history under it
        QTRY_VERIFY(hint->mapToScene({}).y() > 0);
        enter("quiet");
        QTRY_COMPARE(headings(), QString());
        QVERIFY(find("لا توجد مشاكل الآن", "title"));
    }

    void alertsButtonsDoTheirs()
    {
        open("shop", "alerts");
        click(find("تحديد الكل كمقروء"));
        QTRY_COMPARE(sent("/admin/alerts/read"), 1);
        click(find("مسح السجل"));
        QTRY_COMPARE(sent("/admin/alerts/clear"), 1);
        click(itemWithText(find("فحص الاتصال", "actionTitle"), u"فحص الاتصال"_s));
        QCOMPARE(view().page(), u"overview"_s);
        QVERIFY(agent().isScanning());
    }

    void timesMoveOnOnlyWhileTheyCanBeSeen()
    {
        open("shop", "jobs");
        QVERIFY(find("قبل دقيقة واحدة"));
        m_clock.advance(120s);
        QTRY_VERIFY(!find("قبل دقيقة واحدة"));
        QVERIFY(session().clock()->isActive());
        window()->setWindowState(Qt::WindowMinimized);
        QTRY_VERIFY(!session().clock()->isActive());
        window()->setWindowState(Qt::WindowNoState);
        QTRY_VERIFY(session().clock()->isActive());
    }

private:
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
    static QQuickItem *topRow(QQuickItem *list)
    {
        QQuickItem *row = nullptr;
        const double y = list->property("contentY").toDouble() + 10;
        QMetaObject::invokeMethod(
            list, "itemAt", Q_RETURN_ARG(QQuickItem *, row), Q_ARG(double, 100), Q_ARG(double, y));
        return row;
    }
    // The job of the row that has the keyboard itself; none has: empty.
    QString focusedJob() { return focusItem()->parentItem()->property("jobId").toString(); }
    QString headings()
    {
        QStringList texts;
        for (const QQuickItem *item : itemsWith(root(), "weight", int(QFont::Bold))) {
            if (item->parentItem()->property("section").isValid())
                texts.append(item->property("value").toString());
        }
        std::sort(texts.begin(), texts.end(), std::greater<>());
        return texts.join(u'|');
    }
};

ZEMRAK_TEST(listpages, ListPagesTest, QApplication)
#include "tst_listpages.moc"
