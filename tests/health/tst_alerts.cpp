#include "app/alertfeed.h"
#include "health/alertdelivery.h"
#include "health/alertmodel.h"
#include "health/alerts.h"
#include "support/fakebundle.h"
#include "support/httpserver.h"
#include "support/manualclock.h"
#include "support/recordingnotifier.h"
#include "support/wiredata.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

constexpr double now = 1'700'000'000'000; // the manual clock's first moment

AlertItem alert(const char *id, const char *severity = "warning", double age = 20'000)
{
    return {.id = QString::fromLatin1(id),
        .severity = QString::fromLatin1(severity),
        .title = QStringLiteral("عنوان"),
        .message = QStringLiteral("نص"),
        .createdAt = now - age};
}

AlertItem resolved(AlertItem item)
{
    item.resolvedAt = now;
    return item;
}

AlertItem read(AlertItem item)
{
    item.read = true;
    return item;
}

struct Delivery
{
    ManualClock clock;
    RecordingNotifier notifier;
    QList<QStringList> stored;
    QStringList before;
    AlertDelivery delivery{notifier, clock, before, [this](const QStringList &ids) { stored.append(ids); }};

    explicit Delivery(const QStringList &notified = {})
        : before(notified)
    {
    }

    QStringList postedIds() const
    {
        QStringList ids;
        for (const auto &posted : notifier.posted)
            ids.append(posted.id);
        return ids;
    }
};

} // namespace

class AlertsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void localAlertSpeaksForASilentService()
    {
        QVERIFY(!localAlert({.answers = true, .portConflict = true, .silentFor = 99'000}));
        QVERIFY(!localAlert({.silentFor = 0}));
        QVERIFY(!localAlert({.silentFor = 10'000}));
        const auto down = localAlert({.silentFor = 10'001, .now = 5});
        QVERIFY(down);
        QCOMPARE(down->id, QStringLiteral("local-down"));
        QCOMPARE(down->key, QStringLiteral("local:service_down"));
        QCOMPARE(down->severity, QStringLiteral("critical"));
        QCOMPARE(down->title, QStringLiteral("الخدمة المحلية متوقفة"));
        QCOMPARE(down->message,
            QStringLiteral("لا يمكن استقبال أوامر الطباعة الآن. جرّب «إعادة تشغيل الخدمة» من الإعدادات."));
        QCOMPARE(down->action, QStringLiteral("settings"));
        QVERIFY(down->createdAt == 5 && down->lastAt == 5 && down->count == 1 && !down->read && !down->resolvedAt);
        const auto port = localAlert({.portConflict = true});
        QVERIFY(port);
        QCOMPARE(port->id, QStringLiteral("local-port"));
        QCOMPARE(port->key, QStringLiteral("local:port_in_use"));
        QCOMPARE(port->message,
            QStringLiteral(
                "المنفذ 17731 تستخدمه عملية أخرى (غالبًا نسخة أخرى لمستخدم آخر مسجَّل). أغلقها ثم أعد تشغيل الخدمة."));
        QCOMPARE(alertsBadge(port, {alert("a"), read(alert("b")), resolved(alert("c"))}), 3);
        QCOMPARE(alertsBadge(std::nullopt, {alert("a"), alert("b"), read(alert("c"))}), 2);
    }

    void announcesEachAlertOnce()
    {
        Delivery d;
        d.delivery.deliver(
            {alert("old", "critical", 300'000), alert("edge", "warning", 60'000), alert("new", "critical"),
                alert("odd", "strange"), alert("info", "info"), read(alert("read")), resolved(alert("over"))});
        QCOMPARE(d.postedIds(), (QStringList{QStringLiteral("edge"), QStringLiteral("new"), QStringLiteral("odd")}));
        QVERIFY(!d.notifier.posted[0].critical && d.notifier.posted[1].critical && !d.notifier.posted[2].critical);
        QCOMPARE(d.notifier.posted[1].title, QStringLiteral("عنوان"));
        QCOMPARE(d.notifier.posted[1].body, QStringLiteral("نص"));
        QVERIFY(d.notifier.retracted.isEmpty());
        QCOMPARE(d.stored.size(), 1);
        QCOMPARE(d.stored.first().size(), 4); // with the one passed over

        d.delivery.deliver({alert("new", "critical")});
        QCOMPARE(d.notifier.posted.size(), 3);
        QCOMPARE(d.stored.size(), 1);

        d.delivery.deliver({resolved(alert("new", "critical")), resolved(alert("never")),
            resolved(alert("old", "critical", 300'000))});
        QCOMPARE(d.notifier.retracted, (QList<QStringList>{{QStringLiteral("new"), QStringLiteral("old")}}));
        QCOMPARE(d.stored.size(), 2);
        d.delivery.deliver({alert("new", "critical")}); // the same id again: known for good
        QCOMPARE(d.notifier.posted.size(), 3);
        // Age is of no account after the first call.
        d.delivery.deliver({alert("late", "warning", 900'000)});
        QCOMPARE(d.notifier.posted.last().id, QStringLiteral("late"));
    }

    void seedingAloneStoresNothing()
    {
        Delivery d;
        d.delivery.deliver({alert("old", "critical", 60'001)});
        QVERIFY(d.notifier.posted.isEmpty() && d.stored.isEmpty());
        QVERIFY(d.delivery.notified().contains(QStringLiteral("old")));
    }

    void remembersAcrossRestarts()
    {
        Delivery d({QStringLiteral("known")});
        d.delivery.deliver({alert("known", "critical", 100)});
        QVERIFY(d.notifier.posted.isEmpty());
    }

    void storesTheLastThreeHundred()
    {
        QStringList known;
        for (int i = 0; i < 400; ++i)
            known.append(QString::number(i));
        Delivery d(known);
        d.delivery.deliver({alert("new")});
        const QSet<QString> &all = d.delivery.notified();
        QCOMPARE(all.size(), 401);
        QCOMPARE(d.stored.first(), QStringList(all.cbegin(), all.cend()).mid(101));
    }

    void modelTouchesOnlyWhatDiffers()
    {
        AlertModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        const auto ids = [&model] {
            QStringList found;
            for (int row = 0; row < model.rowCount(); ++row)
                found.append(model.index(row).data(AlertModel::IdRole).toString());
            return found.join(QLatin1Char(' '));
        };
        model.setAlerts({alert("a"), alert("b"), alert("c")});
        QCOMPARE(ids(), QStringLiteral("a b c"));
        QCOMPARE(inserted.count(), 1); // one run of rows
        model.setAlerts({alert("a"), alert("b"), alert("c")});
        model.setAlerts({alert("new"), alert("a"), resolved(alert("b")), alert("c")});
        QCOMPARE(ids(), QStringLiteral("new a b c"));
        QCOMPARE(inserted.count(), 2);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toModelIndex().row(), 2);
        QVERIFY(moved.isEmpty() && removed.isEmpty());
        model.setAlerts({alert("c"), alert("new"), alert("x")});
        QCOMPARE(ids(), QStringLiteral("c new x"));
        QCOMPARE(removed.count(), 1);
        QCOMPARE(moved.count(), 1);
        model.setAlerts({alert("x"), alert("x")}); // ids that stand twice break nothing
        QCOMPARE(ids(), QStringLiteral("x x"));
        model.setAlerts({alert("x")});
        model.setAlerts({});
        QVERIFY(model.rowCount() == 0 && reset.isEmpty());
    }

    void feedFetchesMarksAndClears()
    {
        FakeBundle files;
        ManualClock clock;
        HttpServer server;
        RecordingNotifier notifier;
        AdminChannel channel(files.configDir() + QStringLiteral("/admin.token"), clock, server.port());
        AlertDelivery delivery(notifier, clock, {}, [](const QStringList &) {});
        AlertFeed feed(channel, delivery, clock);
        QSignalSpy changed(&feed, &AlertFeed::changed);

        feed.refresh(); // no token yet: nothing is asked
        QTest::qWait(50);
        QVERIFY(server.requests().isEmpty());
        clock.advance(11s);
        feed.refresh();
        QCOMPARE(changed.count(), 1); // silence has become an alert
        QCOMPARE(feed.all().first().id, QStringLiteral("local-down"));
        QCOMPARE(feed.badge(), 1);

        files.writeToken("secret");
        server.answerJson(storedBody(QStringLiteral("wire/alerts.json")));
        feed.refresh();
        QTRY_COMPARE(feed.alerts().size(), 2);
        QCOMPARE(server.requests().first().header("X-Zemrak-Admin"), QByteArray("secret"));
        QCOMPARE(feed.all().size(), 3);
        QCOMPARE(feed.badge(), 2); // whatever the service counts
        feed.setService(true, false);
        QCOMPARE(feed.all().size(), 2);
        QCOMPARE(changed.count(), 3);

        for (const QByteArray &bad : {QByteArray("{}"), QByteArray(R"({"alerts":[{}],"unread":0})"), QByteArray()}) {
            server.answerJson(bad, "500 Oh");
            const qsizetype asked = server.requests().size();
            feed.refresh();
            QTRY_COMPARE(server.requests().size(), asked + 1);
        }
        QTest::qWait(50);
        QCOMPARE(feed.alerts().size(), 2);

        server.answerJson(storedBody(QStringLiteral("wire/alerts.json")));
        feed.refresh();
        server.forget();
        feed.markRead();
        feed.clearHistory();
        QTRY_COMPARE(server.requestsTo("/admin/alerts/read").size(), 1);
        QTRY_COMPARE(server.requestsTo("/admin/alerts/clear").size(), 1);
        QCOMPARE(server.requestsTo("/admin/alerts/read").first().body, QByteArray("{}"));
        QTRY_VERIFY(server.requestsTo("/admin/alerts").size() >= 2);
        QTest::qWait(50);
        QCOMPARE(changed.count(), 3); // the same list announces nothing
    }
};

QTEST_GUILESS_MAIN(AlertsTest)
#include "tst_alerts.moc"
