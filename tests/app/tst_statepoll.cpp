#include "app/statepoll.h"
#include "app/toast.h"
#include "support/application.h"
#include "support/recordingservice.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

QByteArray stateBody(const QString &version = QStringLiteral("1"), qint64 httpPort = 0)
{
    QJsonObject state = storedObject(QStringLiteral("wire/state.json"));
    state.insert(QStringLiteral("version"), version);
    state.insert(QStringLiteral("httpPort"), httpPort);
    return toJson(state);
}

struct Fixture
{
    ManualClock clock;
    RecordingService service;
    StatePoll poll{service, clock};
    QSignalSpy changed{&poll, &StatePoll::stateChanged};
    QSignalSpy answered{&poll, &StatePoll::answered};

    void look(const PrintService::Answer &answer)
    {
        poll.refresh();
        service.requests.last().answer(answer);
    }
};

} // namespace

class StatePollTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pollsAfterOneSecondAndEveryTwo()
    {
        Fixture f;
        QSignalSpy about(&f.poll, &StatePoll::aboutToRefresh);
        f.poll.arm();
        f.clock.advance(999ms);
        QCOMPARE(about.count(), 0);
        f.clock.advance(1ms); // 1 s
        QCOMPARE(about.count(), 1);
        f.clock.advance(1s); // 2 s
        QCOMPARE(about.count(), 2);
        f.clock.advance(4s); // 4 s and 6 s
        QCOMPARE(about.count(), 4);
        f.poll.arm(); // begins anew, without a second beat beside the first
        f.clock.advance(4s);
        QCOMPARE(about.count(), 7);
        f.poll.disarm();
        f.clock.advance(60s);
        QCOMPARE(about.count(), 7);
    }

    void tellsWhetherTheWindowIsShown()
    {
        Fixture f;
        const auto asked = [&f] { return f.service.requests.last().path; };
        f.poll.setWindowShown(true); // before the first poll, which comes by itself
        QVERIFY(f.service.requests.isEmpty());
        f.poll.arm();
        f.clock.advance(1s);
        QCOMPARE(asked(), QStringLiteral("/admin/state"));
        f.poll.setWindowShown(false);
        f.poll.setWindowShown(false);
        QCOMPARE(f.service.requests.size(), 1);
        f.clock.advance(1s);
        QCOMPARE(asked(), QStringLiteral("/admin/state?window=closed"));
        f.poll.setWindowShown(true); // what it shows is asked for at once
        QCOMPARE(f.service.requests.size(), 3);
        QCOMPARE(asked(), QStringLiteral("/admin/state"));
        f.poll.disarm();
        f.poll.setWindowShown(false);
        f.poll.setWindowShown(true);
        QCOMPARE(f.service.requests.size(), 3);
    }

    void asksPlainlyWhereTheQueryIsNotKnown()
    {
        Fixture f;
        f.look(R"({"error":"not found"})");
        QCOMPARE(f.service.requests.last().path, QStringLiteral("/admin/state"));
        QVERIFY(f.changed.isEmpty() && f.answered.isEmpty());
        f.service.requests.last().answer(stateBody());
        QVERIFY(f.poll.state() && f.answered.count() == 1);
        f.poll.refresh();
        f.service.requests.last().answer({}); // nobody answers: nor would anybody the second time
        QCOMPARE(f.service.requests.last().path, QStringLiteral("/admin/state?window=closed"));
        QVERIFY(!f.poll.state());
    }

    void sameStateAnnouncesNothing()
    {
        Fixture f;
        QVERIFY(!f.poll.state());
        f.look(stateBody());
        QCOMPARE(f.service.requests[0].path, QStringLiteral("/admin/state?window=closed"));
        QCOMPARE(f.service.requests[0].method, QByteArray("GET"));
        QCOMPARE(f.service.requests[0].timeout, 5s);
        QCOMPARE(f.changed.count(), 1);
        QCOMPARE(f.poll.state()->printers.size(), 2);
        f.look(stateBody());
        f.look(stateBody() + "  \n"); // other bytes, the same state
        QCOMPARE(f.answered.count(), 3);
        QCOMPARE(f.changed.count(), 1);
        f.look(stateBody(QStringLiteral("2")));
        QCOMPARE(f.changed.count(), 2);
        QCOMPARE(f.poll.state()->version, QStringLiteral("2"));
    }

    void anythingElseMeansNoState()
    {
        for (const PrintService::Answer &answer :
            {PrintService::Answer(), PrintService::Answer(R"({"error":{"code":"unauthorized"}})"),
                PrintService::Answer(R"({"version":"1"})"), PrintService::Answer(stateBody().chopped(1)),
                PrintService::Answer("")}) {
            Fixture f;
            f.poll.setWindowShown(true);
            f.look(stateBody());
            f.look(answer);
            f.look(answer);
            QVERIFY(!f.poll.state());
            QCOMPARE(f.changed.count(), 2);
            QCOMPARE(f.answered.count(), 1);
            f.look(stateBody()); // the very bytes from before
            QVERIFY(f.poll.state());
        }
    }

    void toastIsClearedByTheFirstDelay()
    {
        ManualClock clock;
        Toast toast(clock);
        QSignalSpy changed(&toast, &Toast::changed);
        toast.flash(QStringLiteral("one"));
        clock.advance(1s);
        toast.flash(QStringLiteral("two"));
        clock.advance(1499ms);
        QCOMPARE(toast.text(), QStringLiteral("two"));
        clock.advance(1ms);
        QVERIFY(toast.text().isNull());
        clock.advance(10s);
        QCOMPARE(changed.count(), 3);
    }

    // The pieces together: what the service does is seen on the properties, each change told once.
    void agentPublishesItsService()
    {
        FakeBundle files;
        ManualClock clock;
        HttpServer server;
        TestHost host;
        QTemporaryDir settings;
        UserDefaults defaults(settings.filePath(QStringLiteral("settings.ini")));
        defaults.setBoolean(QLatin1String("keepAwake"), true);
        files.setService(QStringLiteral("echo bye; exit 78"));
        Agent agent({.bundle = files.bundle(), .configDir = files.configDir(), .port = server.port()}, defaults, clock,
            host.forAgent());
        agent.setWindowShown(true);
        QSignalSpy running(&agent, &Agent::runningChanged);
        QSignalSpy conflict(&agent, &Agent::portConflictChanged);
        QSignalSpy state(&agent, &Agent::stateChanged);
        QVERIFY(agent.keepAwake() && !agent.isRunning() && !agent.state() && agent.toast().isNull());

        agent.start();
        QTRY_VERIFY(agent.portConflict());
        QVERIFY(agent.log().startsWith(QStringLiteral("bye\n")));
        QTRY_VERIFY(
            agent.log().contains(QStringLiteral("holding the port"))); // nobody is, on a computer that does nothing
        QCOMPARE(running.count(), 2);
        QCOMPARE(agent.health().headline, QStringLiteral("المنفذ مشغول"));
        server.answerJson("{}"); // an answer that is no state leaves the conflict as it is
        const qsizetype timers = clock.pending();
        agent.refresh();
        QCOMPARE(clock.pending(), timers + 1);
        QTRY_COMPARE(clock.pending(), timers); // the answer has been taken
        QVERIFY(agent.portConflict() && server.requests().size() == 1);

        server.answerJson(stateBody(QStringLiteral("1"), server.port()));
        agent.refresh();
        QTRY_VERIFY(!agent.portConflict());
        QCOMPARE(conflict.count(), 2);
        QCOMPARE(state.count(), 1);
        QCOMPARE(agent.health().headline, QStringLiteral("مشكلة في طابعة"));

        // The port that a state names is where the next request goes, until nothing answers there.
        HttpServer moved;
        moved.answerJson(stateBody(QStringLiteral("moved"), moved.port()));
        server.answerJson(stateBody(QStringLiteral("1"), moved.port()));
        agent.refresh();
        QTRY_COMPARE(state.count(), 2);
        const qsizetype before = server.requests().size();
        agent.refresh();
        QTRY_COMPARE(agent.state()->version, QStringLiteral("moved"));
        QCOMPARE(server.requests().size(), before);
        moved.answerJson("{}");
        agent.refresh();
        QTRY_VERIFY(!agent.state());
        agent.refresh();
        QTRY_COMPARE(server.requests().size(), before + 1);

        agent.stop();
        const qsizetype asked = server.requests().size();
        clock.advance(60s);
        QTRY_COMPARE(clock.pending(), 0);
        QVERIFY(server.requests().size() <= asked + 1); // at most the look one second after the start
        QCOMPARE(files.runs(), 1);
    }

    void requestedPageTellsEachRequest()
    {
        Application f;
        QSignalSpy requested(&f.agent, &Agent::requestedPageChanged);
        f.agent.setRequestedPage(Page::Alerts);
        f.agent.setRequestedPage(Page::Alerts);
        f.agent.setRequestedPage(std::nullopt);
        f.agent.setRequestedPage(Page::Alerts);
        QCOMPARE(requested.count(), 3);
    }
};

ZEMRAK_TEST(statepoll, StatePollTest, QCoreApplication)
#include "tst_statepoll.moc"
