#include "app/statusreport.h"
#include "support/application.h"
#include "support/testmain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using Kind = RunningCopyAnswer::Kind;

namespace {

RunningCopyAnswer told(const QJsonObject &report)
{
    return {.kind = Kind::Told, .report = toJson(report)};
}

} // namespace

class StatusReportTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A copy from its start on: what it tells, in JSON and in words, and how the command ends.
    void followsTheAgent()
    {
        Application f;
        Agent &agent = f.agent;
        const auto words = [&](int exitStatus) {
            const StatusOutcome outcome = statusOutcome(told(statusReport(agent)), false);
            return outcome.exitStatus == exitStatus && outcome.error.isEmpty() ? outcome.output : QString();
        };
        QVERIFY(words(1).contains(QStringLiteral("Service: does not run\n")));

        f.files.setService(QStringLiteral("exit 78"));
        agent.start();
        QTRY_VERIFY(agent.portConflict());
        QVERIFY(words(1).contains(QStringLiteral("Service: does not run, another program holds its port\n")));
        QVERIFY(words(1).contains(QStringLiteral("17731"))); // the problem, as the person reads it

        QJsonObject &state = f.state;
        const QJsonArray all = state.value(QLatin1String("printers")).toArray();
        QJsonObject printer = all.first().toObject();
        printer.insert(QStringLiteral("state"), QStringLiteral("ready"));
        for (const bool healthy : {false, true}) {
            if (healthy)
                state.insert(QStringLiteral("printers"), QJsonArray{printer});
            agent.refresh();
            QTRY_VERIFY(agent.state() && agent.state()->printers.size() == (healthy ? 1 : all.size()));
            const QJsonObject report = statusReport(agent);
            QCOMPARE(report.value(QLatin1String("healthy")).toBool(), healthy);
            QCOMPARE(report.value(QLatin1String("problems")).toArray().isEmpty(), healthy);
            QCOMPARE(report.value(QLatin1String("service"))[QLatin1String("httpsPort")],
                state.value(QLatin1String("httpsPort")));
            QCOMPARE(report.value(QLatin1String("printers")).toArray().size(), healthy ? 1 : all.size());
            QCOMPARE(report.value(QLatin1String("printers"))[0][QLatin1String("state")],
                printer.value(QLatin1String("state")));
            QVERIFY(words(healthy ? 0 : 1).contains(printer.value(QLatin1String("id")).toString()));
            QVERIFY(!toJson(report).contains("pos.example.com"));
            const StatusOutcome asJson = statusOutcome(told(report), true);
            QCOMPARE(asJson.exitStatus, healthy ? 0 : 1);
            QCOMPARE(QJsonDocument::fromJson(asJson.output.toUtf8()).object(), report);
            QCOMPARE(asJson.output.count(QLatin1Char('\n')), 1);
        }
    }

    void saysWhyThereIsNoReport()
    {
        const char *const odd = "the running copy answers in a way that is not understood";
        const std::tuple<Kind, const char *, const char *, int> rows[]
            = {{Kind::NoCopy, "", "no copy is running", 2}, {Kind::Silent, "", "it hangs", 1}, {Kind::Told, "", odd, 1},
                {Kind::Told, "healthy", odd, 1}, {Kind::Told, R"({"format":2,"healthy":true})", odd, 1}};
        for (const auto &[kind, report, why, exitStatus] : rows) {
            const InRow row(report);
            const RunningCopyAnswer answer{.kind = kind, .report = report, .reason = QStringLiteral("it hangs")};
            const StatusOutcome words = statusOutcome(answer, false);
            QCOMPARE(words.exitStatus, exitStatus);
            QCOMPARE(words.error, QStringLiteral("zemrak-printer: %1\n").arg(QLatin1String(why)));
            QVERIFY(words.output.isEmpty());
            const StatusOutcome json = statusOutcome(answer, true);
            QCOMPARE(json.exitStatus, exitStatus);
            QCOMPARE(QJsonDocument::fromJson(json.output.toUtf8()).object(),
                (QJsonObject{{QStringLiteral("format"), 1}, {QStringLiteral("healthy"), false},
                    {QStringLiteral("error"), QLatin1String(why)}}));
        }
    }
};

ZEMRAK_TEST(statusreport, StatusReportTest, QCoreApplication)
#include "tst_statusreport.moc"
