// The connection check: its stages on the clock, and what of the service's answer becomes a result.
#include "host/connectioncheck.h"
#include "support/manualclock.h"
#include "support/recordingservice.h"
#include "support/testmain.h"

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QByteArray found = R"({"printers":[{"id":"a","name":"K","state":"ready"},
    {"id":"b","name":"B","state":"offline","reason":"no_route"}],"connected":1})";

struct Fixture
{
    ManualClock clock;
    RecordingService service;
    std::unique_ptr<ConnectionCheck> check = std::make_unique<ConnectionCheck>(service, clock);
    QStringList told; ///< every signal, with what could be read at that moment

    Fixture()
    {
        const auto tell = [this](const QString &what) {
            told.append(u"%1 %2 %3"_s.arg(clock.steadyTime().count()).arg(check->scanProgress()).arg(what));
        };
        QObject::connect(check.get(), &ConnectionCheck::scanStepChanged, [=, this] { tell(check->scanStep()); });
        QObject::connect(check.get(), &ConnectionCheck::scanningChanged,
            [=, this] { tell(check->isScanning() ? u"begins"_s : u"ends"_s); });
        QObject::connect(check.get(), &ConnectionCheck::scanResultChanged, [=, this] {
            tell(check->scanResult()
                    ? u"%1 of %2"_s.arg(check->scanResult()->connected).arg(check->scanResult()->printers.size())
                    : u"no result"_s);
        });
        QObject::connect(check.get(), &ConnectionCheck::finished, [=] { tell(u"finished"_s); });
    }
};

} // namespace

class ConnectionCheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stages()
    {
        Fixture f;
        for (const auto after : {0ms, 700ms, 600ms}) { // pressed again while it runs: nothing changes
            f.clock.advance(after);
            f.check->runScan();
        }
        QCOMPARE(f.service.requests.size(), 1);
        QCOMPARE(f.service.requests[0].path, u"/admin/scan"_s);
        QCOMPARE(f.service.requests[0].method, QByteArray("POST"));
        QCOMPARE(f.service.requests[0].timeout, 25s);
        f.clock.advance(20s); // as long as the service takes
        f.service.requests[0].answer(found);
        f.clock.advance(10s);
        QCOMPARE(f.told,
            (QStringList{u"0 0.03 begins"_s, u"0 0.03 فحص خدمة الطباعة"_s, u"600 0.22 البحث عن الطابعات المتاحة"_s,
                u"1300 0.4 اختبار اتصال كل طابعة"_s, u"21600 0.85 التحقق من الأذونات والمنافذ"_s,
                u"22200 1 اكتمل الفحص"_s, u"22200 1 1 of 2"_s, u"22200 1 ends"_s, u"22200 1 finished"_s}));
        QCOMPARE(f.check->scanResult()->printers[1].reason, u"no_route"_s);
        QCOMPARE(f.clock.pending(), 0);

        f.told.clear(); // the next one begins where the first did, without its result
        f.check->runScan();
        QCOMPARE(
            f.told, (QStringList{u"31300 0.03 begins"_s, u"31300 0.03 no result"_s, u"31300 0.03 فحص خدمة الطباعة"_s}));
    }

    void failureGoesThroughTheStagesAndLeavesNoResult()
    {
        for (const PrintService::Answer &answer :
            {PrintService::Answer(), PrintService::Answer(""), PrintService::Answer(R"({"error":{"code":"internal"}})"),
                PrintService::Answer(found.chopped(3)), PrintService::Answer(R"({"printers":[],"connected":"1"})")}) {
            Fixture f;
            f.check->runScan();
            f.clock.advance(1300ms);
            f.service.requests.last().answer(answer);
            f.clock.advance(900ms);
            QCOMPARE(f.told.mid(3),
                (QStringList{u"1300 0.4 اختبار اتصال كل طابعة"_s, u"1600 0.85 التحقق من الأذونات والمنافذ"_s,
                    u"2200 1 اكتمل الفحص"_s, u"2200 1 ends"_s, u"2200 1 finished"_s}));
            QVERIFY(!f.check->scanResult());
        }
    }

    void startedAgainByWhoeverHearsOfItsEnd()
    {
        Fixture f;
        connect(f.check.get(), &ConnectionCheck::scanningChanged, [&f] { f.check->runScan(); });
        f.check->runScan();
        f.clock.advance(1300ms);
        f.service.requests.last().answer(found);
        f.clock.advance(900ms);
        QVERIFY(f.check->isScanning());
        QCOMPARE(f.check->scanProgress(), 0.03);
        QCOMPARE(f.told.count(u"2200 0.03 finished"_s), 1);
    }

    void destroyedInTheMiddle()
    {
        Fixture f;
        f.check->runScan();
        f.clock.advance(1300ms);
        f.check.reset();
        f.service.requests.last().answer(found);
        f.clock.advance(10s);
        QCOMPARE(f.clock.pending(), 0);
    }
};

ZEMRAK_TEST(connectioncheck, ConnectionCheckTest, QCoreApplication)
#include "tst_connectioncheck.moc"
