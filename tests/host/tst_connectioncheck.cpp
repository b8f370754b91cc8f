#include "host/connectioncheck.h"
#include "support/manualclock.h"
#include "support/recordingservice.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

const QByteArray found = R"({"printers":[{"id":"a","name":"K","state":"ready"},)"
                         R"({"id":"b","name":"B","state":"offline","reason":"no_route"}],"connected":1})";

struct Fixture
{
    ManualClock clock;
    RecordingService service;
    ConnectionCheck check{service, clock};
    QSignalSpy finished{&check, &ConnectionCheck::finished};

    [[nodiscard]] bool shows(double progress, const char *step) const
    {
        return check.scanProgress() == progress && check.scanStep() == QString::fromUtf8(step);
    }
    void runToRequest()
    {
        check.runScan();
        clock.advance(1300ms);
    }
    void runToEnd(const PrintService::Answer &answer)
    {
        runToRequest();
        service.requests.last().answer(answer);
        clock.advance(900ms);
    }
};

} // namespace

class ConnectionCheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void walksThroughItsStages()
    {
        Fixture f;
        f.check.runScan();
        QVERIFY(f.check.isScanning());
        // Each stage lasts to the millisecond.
        const auto next = [&f](std::chrono::milliseconds after, double progress, const char *step) {
            const double before = f.check.scanProgress();
            f.clock.advance(after - 1ms);
            const bool lasted = f.check.scanProgress() == before && f.finished.isEmpty();
            f.clock.advance(1ms);
            return lasted && f.shows(progress, step);
        };
        QVERIFY(f.shows(0.03, "فحص خدمة الطباعة"));
        QVERIFY(next(600ms, 0.22, "البحث عن الطابعات المتاحة"));
        QVERIFY(f.service.requests.isEmpty());
        QVERIFY(next(700ms, 0.4, "اختبار اتصال كل طابعة"));
        QCOMPARE(f.service.requests.size(), 1);
        QCOMPARE(f.service.requests[0].method, QByteArray("POST"));
        QCOMPARE(f.service.requests[0].path, QStringLiteral("/admin/scan"));
        QCOMPARE(f.service.requests[0].timeout, 25s);

        f.clock.advance(20s); // as long as the service takes
        f.service.requests[0].answer(found);
        QVERIFY(next(300ms, 0.85, "التحقق من الأذونات والمنافذ"));
        QVERIFY(!f.check.scanResult());
        QVERIFY(next(600ms, 1.0, "اكتمل الفحص"));
        QVERIFY(!f.check.isScanning());
        QCOMPARE(f.check.scanResult()->printers.size(), 2);
        QCOMPARE(f.check.scanResult()->printers[1].reason, QStringLiteral("no_route"));
        QCOMPARE(f.check.scanResult()->connected, 1);
        QCOMPARE(f.finished.size(), 1);
    }

    void failureWalksOnAndLeavesNoResult()
    {
        for (const PrintService::Answer &answer :
            {PrintService::Answer(), PrintService::Answer(""), PrintService::Answer(R"({"error":{"code":"internal"}})"),
                PrintService::Answer(found.chopped(3)), PrintService::Answer(R"({"printers":[],"connected":"1"})")}) {
            Fixture f;
            f.runToEnd(found);
            QVERIFY(f.check.scanResult());
            f.runToRequest();
            QVERIFY(!f.check.scanResult());
            f.service.requests.last().answer(answer);
            f.clock.advance(300ms);
            QVERIFY(f.shows(0.85, "التحقق من الأذونات والمنافذ"));
            f.clock.advance(600ms);
            QVERIFY(f.shows(1.0, "اكتمل الفحص"));
            QVERIFY(!f.check.isScanning());
            QVERIFY(!f.check.scanResult());
            QCOMPARE(f.finished.size(), 2);
        }
    }

    void secondStartChangesNothing()
    {
        Fixture f;
        f.check.runScan();
        f.clock.advance(700ms);
        const QSignalSpy steps(&f.check, &ConnectionCheck::scanStepChanged);
        f.check.runScan();
        QVERIFY(f.shows(0.22, "البحث عن الطابعات المتاحة"));
        QVERIFY(steps.isEmpty());
        f.clock.advance(600ms);
        f.check.runScan();
        QCOMPARE(f.service.requests.size(), 1);
        f.service.requests[0].answer(found);
        f.clock.advance(10s);
        QCOMPARE(f.finished.size(), 1);
        QCOMPARE(f.clock.pending(), 0);
    }

    void startAndEndAreAnnouncedWithEverythingInPlace()
    {
        Fixture f;
        bool hadResult = false;
        connect(&f.check, &ConnectionCheck::scanningChanged, &f.check, [&] {
            if (f.check.isScanning()) {
                QVERIFY(f.shows(0.03, "فحص خدمة الطباعة"));
            } else {
                hadResult = f.check.scanResult().has_value();
                f.check.runScan(); // somebody cannot wait
            }
        });
        f.runToEnd(found);
        QVERIFY(hadResult);
        QVERIFY(f.check.isScanning());
        QVERIFY(f.shows(0.03, "فحص خدمة الطباعة"));
        QCOMPARE(f.finished.size(), 1);
    }

    void endOfTheApplicationInTheMiddleIsQuiet()
    {
        ManualClock clock;
        RecordingService service;
        auto check = std::make_unique<ConnectionCheck>(service, clock);
        check->runScan();
        clock.advance(1300ms);
        check.reset();
        service.requests.last().answer(found);
        clock.advance(10s);
        QCOMPARE(clock.pending(), 0);
    }
};

ZEMRAK_TEST(connectioncheck, ConnectionCheckTest, QCoreApplication)
#include "tst_connectioncheck.moc"
