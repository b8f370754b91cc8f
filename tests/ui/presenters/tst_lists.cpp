#include "support/testmain.h"
#include "ui/presenters/alerts/alertlistmodel.h"
#include "ui/presenters/jobs/joblistmodel.h"
#include "ui/presenters/printers/printerlistmodel.h"
#include "ui/presenters/sites/originlistmodel.h"
#include "ui/presenters/text/searchmodel.h"
#include "ui/presenters/text/searchtext.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;

namespace {

constexpr qint64 now = 1'700'000'000'000;
constexpr qint64 minute = 60'000;
constexpr qint64 day = 24 * 60 * minute;

PrinterInfo printer(const QString &type, const QString &state, const std::optional<QString> &reason = {},
    const std::optional<QString> &language = {})
{
    return {.id = QStringLiteral("p"),
        .name = QStringLiteral("Bar"),
        .type = type,
        .state = state,
        .reason = reason,
        .protocolName = language};
}

AlertItem alert(const QString &id, const QString &severity, const std::optional<QString> &action = {}, qint64 count = 1)
{
    return {.id = id,
        .severity = severity,
        .title = id,
        .action = action,
        .createdAt = double(now - 2 * 60 * minute),
        .lastAt = double(now - 3 * minute),
        .count = count};
}

AlertItem resolved(AlertItem item)
{
    item.resolvedAt = double(now);
    return item;
}

// The texts of the first row by role name, in the order asked for.
QStringList firstRow(const QAbstractItemModel &model, const QByteArrayList &roles)
{
    QStringList texts;
    for (const QByteArray &role : roles)
        texts.append(model.index(0, 0).data(model.roleNames().key(role, -1)).toString());
    return texts;
}

QString column(const QAbstractItemModel &model, const QByteArray &role)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.index(row, 0).data(model.roleNames().key(role, -1)).toString());
    return texts.join(QLatin1Char(' '));
}

} // namespace

class ListsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printers_data()
    {
        QTest::addColumn<PrinterInfo>("info");
        QTest::addColumn<QStringList>("shown"); // icon, name, detail, language, state, colour, connected, offline
        const auto row = [](const char *name, const PrinterInfo &info, const QStringList &shown) {
            QTest::newRow(name) << info << shown;
        };
        const QString yes = QStringLiteral("true");
        const QString no = QStringLiteral("false");
        row("network, offline",
            printer(QStringLiteral("net"), QStringLiteral("offline"), QStringLiteral("unreachable"),
                QStringLiteral("none")),
            {QStringLiteral("network"), QStringLiteral("Bar"), QStringLiteral("لا تستجيب على الشبكة"), QString(),
                QStringLiteral("غير متصلة"), QStringLiteral("gRed"), no, yes});
        row("system, ready, an old reason",
            printer(QStringLiteral("cups"), QStringLiteral("ready"), QStringLiteral("unreachable"),
                QStringLiteral("starline")),
            {QStringLiteral("printer.fill"), QStringLiteral("Bar"), QStringLiteral("طابعة النظام"),
                QStringLiteral("Star"), QStringLiteral("جاهزة"), QStringLiteral("gGreen"), yes, no});
        PrinterInfo named = printer(QStringLiteral("serial"), QStringLiteral("error"), {}, QStringLiteral("Star"));
        named.profile = Profile{.alias = QStringLiteral("كاشير 1")};
        row("serial, unhappy, with an alias", named,
            {QStringLiteral("dot.radiowaves.left.and.right"), QStringLiteral("كاشير 1"),
                QStringLiteral("بلوتوث / تسلسلي"), QStringLiteral("ESC/POS"), QStringLiteral("بها مشكلة"),
                QStringLiteral("gRed"), yes, no});
        row("nothing known", printer(QStringLiteral("Net"), QStringLiteral("odd")),
            {QStringLiteral("printer.fill"), QStringLiteral("Bar"), QStringLiteral("بلوتوث / تسلسلي"), QString(),
                QStringLiteral("غير معروفة"), QStringLiteral("gMuted"), no, no});
    }
    void printers()
    {
        QFETCH(PrinterInfo, info);
        QFETCH(QStringList, shown);
        PrinterListModel model;
        model.setRows({info});
        QCOMPARE(
            firstRow(model, {"icon", "name", "detail", "language", "stateText", "stateColor", "connected", "offline"}),
            shown);
        QVERIFY(model.printer(QStringLiteral("p")) && !model.printer(QStringLiteral("q")));
    }

    void jobs()
    {
        JobListModel model(now);
        const JobInfo failed{.id = QStringLiteral("j"),
            .kind = QStringLiteral("drawer"),
            .status = QStringLiteral("failed"),
            .errorCode = QStringLiteral("weird"),
            .updatedAt = double(now - 2 * minute)};
        model.setRows({failed});
        QCOMPARE(firstRow(model,
                     {"jobId", "printerName", "kindText", "statusText", "statusColor", "errorText", "waitingText",
                         "confirmedText", "time"}),
            (QStringList{QStringLiteral("j"), QString(), QStringLiteral("فتح الدرج"), QStringLiteral("فشلت"),
                QStringLiteral("gRed"), QStringLiteral("لم تكتمل الطباعة (weird)."), QString(), QString(),
                QStringLiteral("قبل دقيقتين")}));
    }

    void whatKeepsAJobAndWhoConfirmedIt_data()
    {
        QTest::addColumn<JobInfo>("job");
        QTest::addColumn<QString>("text"); // what it waits for, or who confirmed it
        const auto row = [](const char *status, const char *waitingFor, const char *confirmed, const char16_t *text) {
            JobInfo job{.status = QString::fromLatin1(status)};
            if (*waitingFor != '\0')
                job.waitingFor = QString::fromLatin1(waitingFor);
            if (*confirmed != '\0')
                job.confirmed = QString::fromLatin1(confirmed);
            QTest::addRow("%s %s %s", status, waitingFor, confirmed) << job << QString::fromUtf16(text);
        };
        row("waiting", "paper_out", "unknown", u"انتهى ورق الطابعة. ضع لفة جديدة وأغلق الغطاء.");
        row("printing", "cover_open", "unknown", u"غطاء الطابعة مفتوح. أغلقه جيدًا.");
        row("waiting", "odd", "", u"الطابعة غير مستعدة للطباعة (odd).");
        row("waiting", "", "unknown", u"");
        row("failed", "offline", "no", u""); // its error says so
        row("completed", "offline", "yes", u"أكدتها الطابعة");
        row("completed", "", "unknown", u"لم تؤكدها الطابعة");
        row("completed", "", "", u"");
    }
    void whatKeepsAJobAndWhoConfirmedIt()
    {
        QFETCH(JobInfo, job);
        QFETCH(QString, text);
        QCOMPARE(jobWaitingText(job) + jobConfirmedText(job), text);
    }

    void troubleOfPrinters()
    {
        PrinterInfo info = printer(QStringLiteral("net"), QStringLiteral("ready"));
        const auto trouble = [&info](const char *state, const char *problem, const char *paper) {
            info.state = QString::fromLatin1(state);
            info.problem = problem ? std::optional(QString::fromLatin1(problem)) : std::nullopt;
            info.paper = paper ? std::optional(QString::fromLatin1(paper)) : std::nullopt;
            return troubleText(info);
        };
        QCOMPARE(trouble("error", "cover_open", "out"), QStringLiteral("غطاء الطابعة مفتوح. أغلقه جيدًا."));
        QCOMPARE(trouble("error", nullptr, nullptr), QStringLiteral("في الطابعة مشكلة. تحقق من الورق والغطاء."));
        QCOMPARE(trouble("busy", nullptr, "low"), QStringLiteral("الورق على وشك النفاد. جهّز لفة جديدة."));
        for (const char *state : {"ready", "offline", "unknown"})
            QCOMPARE(trouble(state, nullptr, "ok"), QString());
        QCOMPARE(trouble("offline", nullptr, "low"), QString());
    }

    // Texts move on, but a tick that changes no text tells nothing.
    void timesMoveOn()
    {
        JobListModel model(now);
        model.setRows({{.id = QStringLiteral("a"), .updatedAt = double(now - 10'000)},
            {.id = QStringLiteral("b"), .updatedAt = double(now - 5 * minute)}});
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setNow(now + 1000);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][1].toModelIndex().row(), 0);
        QCOMPARE(changed[0][2].value<QList<int>>(), QList<int>{JobListModel::TimeRole});
        model.setNow(now + minute);
        QCOMPARE(column(model, "time"), QStringLiteral("قبل دقيقة واحدة قبل 6 دقائق"));
        changed.clear();
        model.setNow(now + minute + 1000);
        QVERIFY(changed.isEmpty());
    }

    void origins()
    {
        const QString own = QStringLiteral("https:own");
        const QString added = QStringLiteral("https:added");
        const PairedSite pairing{QStringLiteral("s1"), own, QStringLiteral("POS"), double(now - 2 * day)};
        OriginListModel model(now);
        const QByteArrayList roles{"origin", "tag", "removable", "paired", "siteId", "statusText", "statusColor"};
        const QString yes = QStringLiteral("true");
        const QString no = QStringLiteral("false");

        model.setRows(originRows({own, added}, {own}, {pairing, {QStringLiteral("s2"), own, {}, double(now)}}));
        QCOMPARE(column(model, "origin"), QStringLiteral("https:own https:added"));
        QCOMPARE(firstRow(model, roles),
            (QStringList{own, QString(), no, yes, QStringLiteral("s1"), QStringLiteral("مقترن منذ يومين"),
                QStringLiteral("gMuted")}));
        model.setRows(originRows({added}, {own}, {pairing}));
        QCOMPARE(firstRow(model, roles),
            (QStringList{added, QStringLiteral("أُضيف يدويًا"), yes, no, QString(), QStringLiteral("بانتظار أول طباعة"),
                QStringLiteral("gAmber")}));
        // A pairing that does not say since when can still be ended.
        model.setRows(originRows({added}, {}, {{QStringLiteral("s3"), added, {}, 0}}));
        QCOMPARE(firstRow(model, roles),
            (QStringList{added, QStringLiteral("أُضيف يدويًا"), yes, yes, QStringLiteral("s3"),
                QStringLiteral("بانتظار أول طباعة"), QStringLiteral("gAmber")}));

        model.setRows(originRows({own}, {own}, {pairing}));
        model.setNow(now + day);
        QCOMPARE(column(model, "statusText"), QStringLiteral("مقترن منذ 3 أيام"));
    }

    void alerts_data()
    {
        QTest::addColumn<AlertItem>("item");
        QTest::addColumn<QStringList>("shown"); // section, icon, colour, badge, time, action, button
        const auto row = [](const char *name, const AlertItem &item, const QStringList &shown) {
            QTest::newRow(name) << item << shown;
        };
        const QString active = QStringLiteral("active");
        const QString ago = QStringLiteral("قبل ٣ دقائق");
        row("critical", alert(QStringLiteral("a"), QStringLiteral("critical"), QStringLiteral("settings")),
            {active, QStringLiteral("xmark.octagon.fill"), QStringLiteral("gRed"), QString(), ago,
                QStringLiteral("settings"), QStringLiteral("الإعدادات")});
        row("thrice", alert(QStringLiteral("a"), QStringLiteral("warning"), QStringLiteral("scan"), 3),
            {active, QStringLiteral("exclamationmark.triangle.fill"), QStringLiteral("gAmber"),
                QStringLiteral("تكرر 3 مرة"), QStringLiteral("آخر مرة قبل ٣ دقائق · منذ قبل ساعتين"),
                QStringLiteral("scan"), QStringLiteral("فحص الاتصال")});
        row("unknown action", alert(QStringLiteral("a"), QStringLiteral("info"), QStringLiteral("dance")),
            {active, QStringLiteral("info.circle.fill"), QStringLiteral("#60a5fa"), QString(), ago, QString(),
                QString()});
        row("over", resolved(alert(QStringLiteral("a"), QStringLiteral("critical"))),
            {QStringLiteral("history"), QStringLiteral("checkmark.circle.fill"), QStringLiteral("gGreen"), QString(),
                ago, QString(), QString()});
    }
    void alerts()
    {
        QFETCH(AlertItem, item);
        QFETCH(QStringList, shown);
        AlertListModel model(now);
        model.setAlerts({item});
        QCOMPARE(
            firstRow(model, {"section", "icon", "iconColor", "countBadge", "time", "action", "actionTitle"}), shown);
    }

    void alertsComeInTwoGroups()
    {
        AlertListModel model(now);
        QSignalSpy heading(&model, &AlertListModel::activeCountChanged);
        const AlertItem a = alert(QStringLiteral("a"), QStringLiteral("critical"));
        const AlertItem b = alert(QStringLiteral("b"), QStringLiteral("warning"));
        const AlertItem c = alert(QStringLiteral("c"), QStringLiteral("info"));
        model.setAlerts({a, resolved(b), c});
        QCOMPARE(column(model, "alertId"), QStringLiteral("a c b"));
        QCOMPARE(model.activeHeading(), QStringLiteral("تحتاج انتباهك (2)"));
        QCOMPARE(heading.size(), 1);

        QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
        model.setAlerts({resolved(a), resolved(b), c});
        QCOMPARE(column(model, "section"), QStringLiteral("active history history"));
        QCOMPARE(moved.size(), 1);
        QCOMPARE(model.activeCount(), 1);
    }

    // What the application says of itself is true now, until it is true no more.
    void localAlertsDoNotAge()
    {
        AlertListModel model(now);
        AlertItem local = alert(QStringLiteral("local-down"), QStringLiteral("critical"));
        local.key = QStringLiteral("local:service_down");
        local.createdAt = local.lastAt = double(now);
        model.setAlerts({local, alert(QStringLiteral("a"), QStringLiteral("critical"))});
        const QString before = firstRow(model, {"time"}).first();
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setNow(now + 5 * minute);
        QCOMPARE(column(model, "time"), before + QStringLiteral(" قبل ٨ دقائق"));
        QCOMPARE(changed.size(), 1); // the service's alone
    }

    void searching_data()
    {
        QTest::addColumn<QString>("search");
        QTest::addColumn<bool>("found");
        const auto row = [](const QString &search, bool found) {
            QTest::newRow(search.isEmpty() ? "nothing" : qPrintable(search)) << search << found;
        };
        row({}, true);
        row(QStringLiteral("  "), true);
        row(QStringLiteral("احمد"), true);
        row(QStringLiteral("أَحـمد"), true);
        row(QStringLiteral("KITCHEN مقهي"), true); // in any order, in any texts
        row(QStringLiteral("قهوه"), true);
        row(QStringLiteral("2"), true); // for ٢
        row(QStringLiteral("café"), true);
        row(QStringLiteral("\u200Fkitchen"), true);
        row(QStringLiteral("kitchen bar"), false);
        row(QStringLiteral("nahmad"), false); // not across two texts
    }
    void searching()
    {
        QFETCH(QString, search);
        QFETCH(bool, found);
        const QStringList texts{QStringLiteral("مقهى أحمد ٢"), QStringLiteral("Kitchen"), QStringLiteral("قَهْوَة Cafe")};
        QCOMPARE(matches(searchWords(search), texts), found);
    }

    // 5,000 jobs: a poll, a search and a tick each take no time a person would feel, and the list stays whole.
    void thousandsOfJobs()
    {
        QList<JobInfo> jobs;
        for (int i = 0; i < 5000; ++i)
            jobs.append({.id = QStringLiteral("0f8fad5b-d9cb-469f-a165-%1").arg(i, 12, 10, QLatin1Char('0')),
                .printerName = i % 50 == 0 ? QStringLiteral("مطبخ") : QStringLiteral("كاشير"),
                .kind = QStringLiteral("commands"),
                .status = QStringLiteral("completed"),
                .updatedAt = double(now - i * minute)});
        JobListModel model(now);
        SearchModel found(model, {JobListModel::PrinterNameRole, JobListModel::IdRole});
        QElapsedTimer timer;
        timer.start();
        const auto lap
            = [&timer](const char *what) { qInfo("%s: %lld ms", what, static_cast<long long>(timer.restart())); };
        QVERIFY(!found.isSearchOffered());
        model.setRows(jobs);
        lap("filled");
        QCOMPARE(found.count(), 5000);
        QVERIFY(found.isSearchOffered());

        found.setSearch(QStringLiteral("مطبخ"));
        lap("searched");
        QCOMPARE(found.count(), 100);
        QSignalSpy reset(&found, &QAbstractItemModel::modelReset);
        QSignalSpy laidOut(&found, &QAbstractItemModel::layoutChanged);
        jobs.prepend({.id = QStringLiteral("new"), .printerName = QStringLiteral("مطبخ"), .updatedAt = double(now)});
        jobs.removeLast();
        timer.restart();
        model.setRows(jobs);
        lap("polled");
        QCOMPARE(found.count(), 101);
        QCOMPARE(found.index(0, 0).data(JobListModel::IdRole).toString(), QStringLiteral("new"));
        timer.restart();
        model.setNow(now + 1000);
        lap("ticked");
        jobs.move(101, 0);
        model.setRows(jobs);
        QCOMPARE(found.index(0, 0).data(JobListModel::IdRole).toString(), jobs.first().id);
        QVERIFY(reset.isEmpty() && laidOut.isEmpty()); // either would send a view back to its first row

        QVERIFY(found.isSearching());
        model.setRows({});
        QVERIFY(found.isSearchOffered()); // one must be able to end the search
        QVERIFY(!found.isSearching()); // in nothing
    }
};

ZEMRAK_TEST(lists, ListsTest, QCoreApplication)
#include "tst_lists.moc"
