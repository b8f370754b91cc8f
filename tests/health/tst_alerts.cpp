#include "app/alertfeed.h"
#include "health/alertdelivery.h"
#include "health/alerts.h"
#include "support/manualclock.h"
#include "support/recordingnotifier.h"
#include "support/recordingservice.h"
#include "support/testmain.h"
#include "support/wiredata.h"

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
    QStringList stored; ///< joined
    AlertDelivery delivery;

    explicit Delivery(const QStringList &notified = {})
        : delivery(notifier, clock, notified, [this](const QStringList &ids) { stored.append(ids.join(u' ')); })
    {
    }

    /// What this delivery posted, "!" behind the critical ones, and took back, "-" before.
    QString told(const QList<AlertItem> &alerts)
    {
        notifier.posted.clear();
        notifier.retracted.clear();
        delivery.deliver(alerts);
        QStringList ids;
        for (const RecordingNotifier::Posted &posted : notifier.posted)
            ids.append(posted.id + (posted.critical ? QStringLiteral("!") : QString()));
        for (const QStringList &retracted : notifier.retracted)
            ids.append(u'-' + retracted.join(QStringLiteral(" -")));
        return ids.join(u' ');
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
        QVERIFY(!localAlert({.silentFor = 10'000}));
        AlertItem expected{.id = QStringLiteral("local-down"),
            .key = QStringLiteral("local:service_down"),
            .severity = QStringLiteral("critical"),
            .title = QStringLiteral("الخدمة المحلية متوقفة"),
            .message = QStringLiteral("لا يمكن استقبال أوامر الطباعة الآن. جرّب «إعادة تشغيل الخدمة» من الإعدادات."),
            .action = QStringLiteral("settings"),
            .createdAt = 5,
            .lastAt = 5,
            .count = 1};
        QVERIFY(localAlert({.silentFor = 10'001, .now = 5}) == expected);
        expected.id = QStringLiteral("local-port");
        expected.key = QStringLiteral("local:port_in_use");
        expected.title = QStringLiteral("المنفذ مشغول");
        expected.message = QStringLiteral(
            "المنفذ 17731 تستخدمه عملية أخرى (غالبًا نسخة أخرى لمستخدم آخر مسجَّل). أغلقها ثم أعد تشغيل الخدمة.");
        QVERIFY(localAlert({.portConflict = true, .now = 5}) == expected);
        QCOMPARE(alertsBadge(expected, {alert("a"), read(alert("b")), resolved(alert("c"))}), 3);
    }

    void announcesEachAlertOnce()
    {
        Delivery d({QStringLiteral("known")});
        QCOMPARE(d.told({alert("old", "critical", 60'001)}), QString());
        QVERIFY(d.stored.isEmpty()); // passing over alone is not worth a write

        const AlertItem fresh = alert("new", "critical", 60'001); // age counts at the first call only
        QCOMPARE(d.told({alert("old"), alert("known"), fresh, alert("odd", "strange"), alert("info", "info"),
                     read(alert("read")), resolved(alert("over"))}),
            QStringLiteral("new! odd"));
        QCOMPARE(d.notifier.posted.first().title, QStringLiteral("عنوان"));
        QCOMPARE(d.notifier.posted.first().body, QStringLiteral("نص"));
        QCOMPARE(d.told({fresh, alert("odd", "strange")}), QString());
        QCOMPARE(d.stored.size(), 1);
        QCOMPARE(
            d.told({resolved(fresh), resolved(alert("never")), resolved(alert("old"))}), QStringLiteral("-new -old"));
        QCOMPARE(d.stored.size(), 2);
        QCOMPARE(d.told({fresh}), QString()); // known for good
        QCOMPARE(Delivery().told({alert("edge", "warning", 60'000)}), QStringLiteral("edge"));
    }

    void lostReceiptsShareOneNotification()
    {
        const auto lost = [](const char *id, const char *printer = "p1") {
            AlertItem item = alert(id);
            item.key = QStringLiteral("job:%1:failed").arg(QLatin1String(printer));
            return item;
        };
        const auto title = [](const Delivery &d) { return d.notifier.posted.last().title; };
        Delivery d;
        QCOMPARE(d.told({lost("a")}), QStringLiteral("a"));
        QCOMPARE(title(d), QStringLiteral("عنوان"));
        QCOMPARE(d.told({lost("d"), lost("c"), lost("x", "p2"), lost("b"), lost("a")}), QStringLiteral("d x -a"));
        QCOMPARE(d.notifier.posted.first().title, QStringLiteral("عنوان (4)"));
        QCOMPARE(title(d), QStringLiteral("عنوان"));
        QCOMPARE(d.told({lost("d"), lost("c"), lost("x", "p2"), lost("b"), lost("a")}), QString());
        // Those that have been read are told no more.
        const QList<AlertItem> over{resolved(read(lost("d"))), resolved(read(lost("c"))), resolved(read(lost("a")))};
        QCOMPARE(d.told(over), QStringLiteral("-d -c -a"));
        QCOMPARE(d.told(QList<AlertItem>{lost("e")} + over).left(1), QStringLiteral("e"));
        QCOMPARE(title(d), QStringLiteral("عنوان"));
        AlertItem offline = alert("o1"), again = alert("o2"); // no receipt, whatever its key
        offline.key = again.key = QStringLiteral("printer:p1:offline");
        QCOMPARE(d.told({offline, again}), QStringLiteral("o1 o2"));
    }

    void storesTheLastThreeHundredOfTheSet()
    {
        QStringList known;
        for (int i = 0; i < 400; ++i)
            known.append(QString::number(i));
        Delivery d(known);
        QCOMPARE(d.told({alert("new")}), QStringLiteral("new"));
        const QSet<QString> &all = d.delivery.notified();
        QCOMPARE(all.size(), 401);
        QCOMPARE(d.stored, {QStringList(all.cbegin(), all.cend()).mid(101).join(u' ')});
    }

    void feedFetchesMarksAndClears()
    {
        ManualClock clock;
        RecordingService service;
        RecordingNotifier notifier;
        AlertDelivery delivery(notifier, clock, {}, [](const QStringList &) {});
        bool hasToken = false;
        AlertFeed feed(
            service, [&hasToken] { return hasToken; }, delivery, clock);
        QSignalSpy changed(&feed, &AlertFeed::changed);
        const auto refresh = [&] {
            feed.refresh();
            return service.requests.takeLast();
        };

        clock.advance(11s);
        feed.refresh();
        QVERIFY(service.requests.isEmpty());
        QCOMPARE(changed.count(), 1); // silence has become an alert
        QCOMPARE(feed.all().first().id, QStringLiteral("local-down"));
        QCOMPARE(feed.badge(), 1);

        hasToken = true;
        const QByteArray list = storedBody(QStringLiteral("wire/alerts.json"));
        const RecordingService::Request first = refresh();
        QCOMPARE(first.method + ' ' + first.path.toUtf8(), QByteArray("GET /admin/alerts"));
        QCOMPARE(first.timeout, 5s);
        first.answer(list);
        QCOMPARE(feed.alerts().size(), 2);
        QCOMPARE(feed.all().size(), 3);
        QCOMPARE(feed.badge(), 2); // whatever the service counts
        feed.setService(true, false);
        QCOMPARE(feed.all().size(), 2);
        QCOMPARE(changed.count(), 3);

        // Bad answers, the same answer again, and a late one to an earlier question change nothing.
        const RecordingService::Request early = refresh();
        for (const PrintService::Answer &answer : {PrintService::Answer(), PrintService::Answer("{}"),
                 PrintService::Answer(R"({"alerts":[{}],"unread":0})"), PrintService::Answer(list)})
            refresh().answer(answer);
        early.answer(R"({"alerts":[],"unread":0})");
        QCOMPARE(feed.alerts().size(), 2);
        QCOMPARE(changed.count(), 3);

        // After each of these the service's word is taken.
        for (const bool clears : {false, true}) {
            clears ? feed.clearHistory() : feed.markRead();
            const RecordingService::Request told = service.requests.takeFirst();
            QCOMPARE(told.path, clears ? QStringLiteral("/admin/alerts/clear") : QStringLiteral("/admin/alerts/read"));
            QVERIFY(told.method == "POST" && told.body == QJsonObject());
            QVERIFY(service.requests.isEmpty());
            told.answer("{}");
            QCOMPARE(service.requests.takeFirst().path, QStringLiteral("/admin/alerts"));
        }
        refresh().answer(R"({"alerts":[],"unread":0})");
        QVERIFY(feed.alerts().isEmpty());
    }
};

ZEMRAK_TEST(alerts, AlertsTest, QCoreApplication)
#include "tst_alerts.moc"
