#include "app/agent.h"
#include "app/statusreport.h"
#include "support/httpserver.h"
#include "support/manualclock.h"
#include "support/testhost.h"
#include "support/testmain.h"
#include "support/wiredata.h"

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
        FakeBundle files;
        ManualClock clock;
        HttpServer server;
        TestHost host;
        const QTemporaryDir settings;
        UserDefaults defaults(settings.filePath(QStringLiteral("settings.ini")));
        Agent agent({.bundle = files.bundle(), .configDir = files.configDir(), .port = server.port()}, defaults, clock,
            host.forAgent());
        const auto words = [&](int exitStatus) {
            const StatusOutcome outcome = statusOutcome(told(statusReport(agent)), false);
            return outcome.exitStatus == exitStatus && outcome.error.isEmpty() ? outcome.output : QString();
        };
        QVERIFY(words(1).contains(QStringLiteral("Service: does not run\n")));

        files.setService(QStringLiteral("exit 78"));
        agent.start();
        QTRY_VERIFY(agent.portConflict());
        QVERIFY(words(1).contains(QStringLiteral("Service: does not run, another program holds its port\n")));
        QVERIFY(words(1).contains(QStringLiteral("17731"))); // the problem, as the person reads it

        QJsonObject state = storedObject(QStringLiteral("wire/state.json"));
        state.insert(QStringLiteral("httpPort"), server.port());
        const QJsonArray all = state.value(QLatin1String("printers")).toArray();
        QJsonObject printer = all.first().toObject();
        printer.insert(QStringLiteral("state"), QStringLiteral("ready"));
        for (const bool healthy : {false, true}) {
            if (healthy)
                state.insert(QStringLiteral("printers"), QJsonArray{printer});
            server.answerJson(toJson(state));
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

    void saysWhyThereIsNoReport_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("report");
        QTest::addColumn<QString>("why");
        QTest::addColumn<int>("exitStatus");
        const QString odd = QStringLiteral("the running copy answers in a way that is not understood");
        QTest::newRow("no copy") << int(Kind::NoCopy) << QByteArray() << QStringLiteral("no copy is running") << 2;
        QTest::newRow("silent") << int(Kind::Silent) << QByteArray() << QStringLiteral("it hangs") << 1;
        QTest::newRow("nothing") << int(Kind::Told) << QByteArray() << odd << 1;
        QTest::newRow("not JSON") << int(Kind::Told) << QByteArray("healthy") << odd << 1;
        QTest::newRow("another format") << int(Kind::Told) << QByteArray(R"({"format":2,"healthy":true})") << odd << 1;
    }
    void saysWhyThereIsNoReport()
    {
        QFETCH(int, kind);
        QFETCH(QByteArray, report);
        QFETCH(QString, why);
        QFETCH(int, exitStatus);
        const RunningCopyAnswer answer{.kind = Kind(kind), .report = report, .reason = QStringLiteral("it hangs")};
        const StatusOutcome words = statusOutcome(answer, false);
        QCOMPARE(words.exitStatus, exitStatus);
        QCOMPARE(words.error, QStringLiteral("zemrak-printer: %1\n").arg(why));
        QVERIFY(words.output.isEmpty());
        const StatusOutcome json = statusOutcome(answer, true);
        QCOMPARE(json.exitStatus, exitStatus);
        QCOMPARE(QJsonDocument::fromJson(json.output.toUtf8()).object(),
            (QJsonObject{
                {QStringLiteral("format"), 1}, {QStringLiteral("healthy"), false}, {QStringLiteral("error"), why}}));
    }
};

ZEMRAK_TEST(statusreport, StatusReportTest, QCoreApplication)
#include "tst_statusreport.moc"
