// The models of the lists: what a row shows, what moves on with the time, what a search finds.
#include "ui/presenters/alerts/alertlistmodel.h"
#include "ui/presenters/jobs/joblistmodel.h"
#include "ui/presenters/presentertest.h"
#include "ui/presenters/printers/printerlistmodel.h"
#include "ui/presenters/sites/originlistmodel.h"
#include "ui/presenters/text/searchmodel.h"
#include "ui/presenters/text/searchtext.h"

using namespace zemrak;
using namespace zemrak::test;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 now = 1'700'000'000'000;
constexpr qint64 minute = 60'000;
constexpr qint64 day = 24 * 60 * minute;

std::optional<QString> unlessEmpty(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

AlertItem alert(const QString &id, const QString &severity, const QString &action = {}, qint64 count = 1)
{
    return {.id = id,
        .severity = severity,
        .title = id,
        .action = unlessEmpty(action),
        .createdAt = double(now - 2 * 60 * minute),
        .lastAt = double(now - 3 * minute),
        .count = count};
}

AlertItem resolved(AlertItem item)
{
    item.resolvedAt = double(now);
    return item;
}

} // namespace

class ListsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printers()
    {
        // Type, state, reason, language, alias; then what the card shows.
        for (const QStringList &row : rowsOf(R"(
                net    | offline | unreachable | none     |  | network | Bar | لا تستجيب على الشبكة ||غير متصلة| gRed |false|true
                cups   | ready   | unreachable | starline |  | printer.fill | Bar | طابعة النظام | Star | جاهزة | gGreen |true|false
                serial | error   |  | Star | كاشير 1 | dot.radiowaves.left.and.right | كاشير 1 | بلوتوث / تسلسلي | ESC/POS | بها مشكلة | gRed |true|false
                Net    | odd     |  |      |         | printer.fill | Bar | بلوتوث / تسلسلي || غير معروفة | gMuted |false|false)")) {
            PrinterInfo info{.id = u"p"_s,
                .name = u"Bar"_s,
                .type = row[0],
                .state = row[1],
                .reason = unlessEmpty(row[2]),
                .protocolName = unlessEmpty(row[3])};
            if (!row[4].isEmpty())
                info.profile = Profile{.alias = row[4]};
            PrinterListModel model;
            model.setRows({info});
            QCOMPARE(cells(model, 0, "icon name detail language stateText stateColor connected offline"),
                row.mid(5).join(u'|'));
            QVERIFY(model.printer(u"p"_s) && !model.printer(u"q"_s));
        }
    }

    void jobs()
    {
        JobListModel model(now);
        model.setRows({{.id = u"j"_s,
            .kind = u"drawer"_s,
            .status = u"failed"_s,
            .errorCode = u"weird"_s,
            .updatedAt = double(now - 2 * minute)}});
        QCOMPARE(cells(model, 0,
                     "jobId printerName kindText statusText statusColor errorText waitingText confirmedText time"),
            u"j||فتح الدرج|فشلت|gRed|لم تكتمل الطباعة (weird).|||قبل دقيقتين"_s);
    }

    void whatKeepsAJobAndWhoConfirmedIt()
    {
        // Status, what it waits for, whether it was confirmed; what is said of that.
        for (const QStringList &row : rowsOf(R"(
                waiting   | paper_out  | unknown | انتهى ورق الطابعة. ضع لفة جديدة وأغلق الغطاء.
                printing  | cover_open | unknown | غطاء الطابعة مفتوح. أغلقه جيدًا.
                waiting   | odd        |         | الطابعة غير مستعدة للطباعة (odd).
                waiting   |            | unknown |
                failed    | offline    | no      |
                completed | offline    | yes     | أكدتها الطابعة
                completed |            | unknown | لم تؤكدها الطابعة
                completed |            |         |)")) {
            const JobInfo job{.status = row[0], .waitingFor = unlessEmpty(row[1]), .confirmed = unlessEmpty(row[2])};
            QCOMPARE(row[0] + row[1] + jobWaitingText(job) + jobConfirmedText(job), row[0] + row[1] + row[3]);
        }
    }

    void troubleOfPrinters()
    {
        // State, problem, paper; the trouble.
        for (const QStringList &row : rowsOf(R"(
                error   | cover_open | out | غطاء الطابعة مفتوح. أغلقه جيدًا.
                error   |            |     | في الطابعة مشكلة. تحقق من الورق والغطاء.
                busy    |            | low | الورق على وشك النفاد. جهّز لفة جديدة.
                ready   |            | ok  |
                offline |            | ok  |
                unknown |            | ok  |
                offline |            | low |)")) {
            PrinterInfo info{.id = u"p"_s, .name = u"Bar"_s, .type = u"net"_s, .state = row[0]};
            info.problem = unlessEmpty(row[1]);
            info.paper = unlessEmpty(row[2]);
            QCOMPARE(row[0] + row[2] + troubleText(info), row[0] + row[2] + row[3]);
        }
    }

    // Texts move on, but a tick that changes no text tells nothing.
    void timesMoveOn()
    {
        JobListModel model(now);
        model.setRows(
            {{.id = u"a"_s, .updatedAt = double(now - 10'000)}, {.id = u"b"_s, .updatedAt = double(now - 5 * minute)}});
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setNow(now + 1000);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][1].toModelIndex().row(), 0);
        QCOMPARE(changed[0][2].value<QList<int>>(), QList<int>{JobListModel::TimeRole});
        model.setNow(now + minute);
        QCOMPARE(column(model, "time"), u"قبل دقيقة واحدة|قبل 6 دقائق"_s);
        changed.clear();
        model.setNow(now + minute + 1000);
        QVERIFY(changed.isEmpty());
    }

    void origins()
    {
        const QString own = u"https:own"_s, added = u"https:added"_s;
        const PairedSite pairing{u"s1"_s, own, u"POS"_s, double(now - 2 * day)};
        OriginListModel model(now);
        const auto first = [&model](const QList<OriginRow> &rows) {
            model.setRows(rows);
            return cells(model, 0, "origin tag removable paired siteId statusText statusColor");
        };
        QCOMPARE(first(originRows({own, added}, {own}, {pairing, {u"s2"_s, own, {}, double(now)}})),
            u"https:own||false|true|s1|مقترن منذ يومين|gMuted"_s);
        QCOMPARE(column(model, "origin"), u"https:own|https:added"_s);
        QCOMPARE(first(originRows({added}, {own}, {pairing})),
            u"https:added|أُضيف يدويًا|true|false||بانتظار أول طباعة|gAmber"_s);
        // A pairing that does not say since when can still be ended.
        QCOMPARE(first(originRows({added}, {}, {{u"s3"_s, added, {}, 0}})),
            u"https:added|أُضيف يدويًا|true|true|s3|بانتظار أول طباعة|gAmber"_s);
        first(originRows({own}, {own}, {pairing}));
        model.setNow(now + day);
        QCOMPARE(column(model, "statusText"), u"مقترن منذ 3 أيام"_s);
    }

    void alerts()
    {
        // Severity, action, count; then what the row shows.
        for (const QStringList &row : rowsOf(R"(
                critical | settings | 1 | active | xmark.octagon.fill | gRed || قبل ٣ دقائق | settings | الإعدادات
                warning  | scan | 3 | active | exclamationmark.triangle.fill | gAmber | تكرر 3 مرة | آخر مرة قبل ٣ دقائق · منذ قبل ساعتين | scan | فحص الاتصال
                info     | dance | 1 | active | info.circle.fill | #60a5fa || قبل ٣ دقائق ||)")) {
            AlertListModel model(now);
            model.setAlerts({alert(u"a"_s, row[0], row[1], row[2].toInt())});
            QCOMPARE(
                cells(model, 0, "section icon iconColor countBadge time action actionTitle"), row.mid(3).join(u'|'));
        }
        AlertListModel model(now);
        QSignalSpy heading(&model, &AlertListModel::activeCountChanged);
        const AlertItem a = alert(u"a"_s, u"critical"_s), b = alert(u"b"_s, u"warning"_s), c = alert(u"c"_s, u"info"_s);
        model.setAlerts({a, resolved(b), c}); // two groups
        QCOMPARE(column(model, "alertId"), u"a|c|b"_s);
        QCOMPARE(cells(model, 2, "icon iconColor"), u"checkmark.circle.fill|gGreen"_s);
        QCOMPARE(model.activeHeading(), u"تحتاج انتباهك (2)"_s);
        QCOMPARE(heading.size(), 1);
        QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
        model.setAlerts({resolved(a), resolved(b), c});
        QCOMPARE(column(model, "section"), u"active|history|history"_s);
        QVERIFY(moved.size() == 1 && model.activeCount() == 1);
    }

    // What the application says of itself is true now, until it is true no more.
    void localAlertsDoNotAge()
    {
        AlertListModel model(now);
        AlertItem local = alert(u"local-down"_s, u"critical"_s);
        local.key = u"local:service_down"_s;
        local.createdAt = local.lastAt = double(now);
        model.setAlerts({local, alert(u"a"_s, u"critical"_s)});
        const QString before = cells(model, 0, "time");
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setNow(now + 5 * minute);
        QCOMPARE(column(model, "time"), before + u"|قبل ٨ دقائق"_s);
        QCOMPARE(changed.size(), 1); // the service's alone
    }

    void searching()
    {
        const QStringList texts{u"مقهى أحمد ٢"_s, u"Kitchen"_s, u"قَهْوَة Cafe"_s};
        for (const QString &search : {QString(), u"  "_s, u"احمد"_s, u"أَحـمد"_s, u"KITCHEN مقهي"_s, u"قهوه"_s, u"2"_s,
                 u"café"_s, u"\u200Fkitchen"_s})
            QVERIFY2(matches(searchWords(search), texts), qPrintable(search));
        for (const QString &search : {u"kitchen bar"_s, u"nahmad"_s}) // every word is there; none lies across two texts
            QVERIFY2(!matches(searchWords(search), texts), qPrintable(search));
    }

    // 5,000 jobs: a poll, a search and a tick together take no time a person would feel, and the list stays whole.
    void thousandsOfJobs()
    {
        QList<JobInfo> jobs;
        for (int i = 0; i < 5000; ++i)
            jobs.append({.id = u"0f8fad5b-d9cb-469f-a165-%1"_s.arg(i, 12, 10, QChar(u'0')),
                .printerName = i % 50 == 0 ? u"مطبخ"_s : u"كاشير"_s,
                .kind = u"commands"_s,
                .status = u"completed"_s,
                .updatedAt = double(now - i * minute)});
        JobListModel model(now);
        SearchModel found(model, {JobListModel::PrinterNameRole, JobListModel::IdRole});
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!found.isSearchOffered());
        model.setRows(jobs);
        QVERIFY(found.count() == 5000 && found.isSearchOffered());
        found.setSearch(u"مطبخ"_s);
        QCOMPARE(found.count(), 100);
        QSignalSpy reset(&found, &QAbstractItemModel::modelReset);
        QSignalSpy laidOut(&found, &QAbstractItemModel::layoutChanged);
        jobs.prepend({.id = u"new"_s, .printerName = u"مطبخ"_s, .updatedAt = double(now)});
        jobs.removeLast();
        model.setRows(jobs);
        QCOMPARE(found.count(), 101);
        const auto first = [&found] { return found.index(0, 0).data(JobListModel::IdRole).toString(); };
        QCOMPARE(first(), u"new"_s);
        model.setNow(now + 1000);
        qInfo("filled, searched, polled and ticked: %lld ms", static_cast<long long>(timer.elapsed()));
        jobs.move(101, 0);
        model.setRows(jobs);
        QCOMPARE(first(), jobs.first().id);
        QVERIFY(reset.isEmpty() && laidOut.isEmpty()); // either would send a view back to its first row
        QVERIFY(found.isSearching());
        model.setRows({});
        QVERIFY(found.isSearchOffered()); // one must be able to end the search
        QVERIFY(!found.isSearching()); // in nothing
    }
};

ZEMRAK_TEST(lists, ListsTest, QCoreApplication)
#include "tst_lists.moc"
