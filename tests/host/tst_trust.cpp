#include "host/httpstrust.h"
#include "support/recordingservice.h"
#include "support/testmain.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <atomic>
#include <memory>

using namespace zemrak;
using namespace zemrak::test;

namespace {

/// Answers when the test says so, or when it is cancelled.
class GatedTest final : public CertificateTest
{
public:
    [[nodiscard]] bool isTrusted(const QString &certificateFile, const std::atomic_bool &cancelled) const override
    {
        file = certificateFile;
        onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        ++started;
        while (!gate.tryAcquire(1, 10)) {
            if (cancelled)
                return false;
        }
        return verdicts.value(ended++);
    }

    QList<bool> verdicts;
    mutable QString file;
    mutable std::atomic_bool onMainThread = false;
    mutable std::atomic_int started = 0;
    mutable int ended = 0;
    mutable QSemaphore gate;
};

const QString enabled = QStringLiteral("تم تفعيل HTTPS لـ Safari");
const QString notEnabled = QStringLiteral("لم يتم التفعيل (يمكنك إعادته لاحقًا من الإعدادات)");

struct Fixture
{
    GatedTest test;
    RecordingCommands service;
    std::unique_ptr<HttpsTrust> trust = std::make_unique<HttpsTrust>(service, test, QStringLiteral("/config dir"));
    QSignalSpy changed{trust.get(), &HttpsTrust::caTrustedChanged};
    QList<bool> reports;
    QStringList notices;

    Fixture()
    {
        QObject::connect(trust.get(), &HttpsTrust::notice, [this](const QString &text) { notices.append(text); });
    }

    void verdicts(const QList<bool> &list)
    {
        test.verdicts = list;
        test.gate.release(int(list.size()));
    }
    HttpsTrust::Done report()
    {
        return [this](bool trusted) { reports.append(trusted); };
    }
};

} // namespace

class TrustTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refreshPublishesSilently()
    {
        Fixture f;
        QVERIFY(!f.trust->caTrusted());
        f.verdicts({true, true, false});
        f.trust->refreshTrust();
        QVERIFY(!f.trust->caTrusted()); // never before the event loop turns
        QTRY_VERIFY(f.trust->caTrusted());
        QCOMPARE(f.test.file, QStringLiteral("/config dir/tls/ca.crt"));
        QVERIFY(!f.test.onMainThread);
        f.trust->refreshTrust();
        f.trust->refreshTrust();
        QTRY_VERIFY(!f.trust->caTrusted());
        QCOMPARE(f.changed.size(), 2);
        QCOMPARE(f.notices, QStringList());
        QVERIFY(f.service.commands.isEmpty());
    }

    void installs_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("verifies");
        QTest::addColumn<bool>("trusted");
        QTest::newRow("installed and confirmed") << 0 << true << true;
        QTest::newRow("installed, yet it does not verify") << 0 << false << false;
        QTest::newRow("refused") << 1 << true << false;
        QTest::newRow("never launched, or killed") << -1 << true << false;
    }
    void installs()
    {
        QFETCH(int, status);
        QFETCH(bool, verifies);
        QFETCH(bool, trusted);
        Fixture f;
        f.verdicts({verifies});
        QStringList order;
        QObject::connect(f.trust.get(), &HttpsTrust::caTrustedChanged, f.trust.get(),
            [&] { order.append(QStringLiteral("assigned")); });
        f.trust->trustForSafari([&](bool result) {
            QCOMPARE(f.trust->caTrusted(), result);
            order += f.notices;
            order.append(result ? QStringLiteral("done: yes") : QStringLiteral("done: no"));
        });
        QCOMPARE(f.service.commands.size(), 1);
        QCOMPARE(f.service.commands.first().arguments, QStringList(QStringLiteral("trust-ca")));
        QCoreApplication::processEvents();
        QCOMPARE(f.test.started, 0); // not before the service has ended
        f.service.commands.first().end(status);
        QStringList expected{notEnabled, QStringLiteral("done: no")};
        if (trusted)
            expected = QStringList{QStringLiteral("assigned"), enabled, QStringLiteral("done: yes")};
        QTRY_COMPARE(order, expected);
        QCOMPARE(f.test.started, status == 0 ? 1 : 0);
        QCOMPARE(f.trust->caTrusted(), trusted);
    }

    void failedInstallTakesAnEarlierYesBack()
    {
        Fixture f;
        f.verdicts({true});
        f.trust->refreshTrust();
        QTRY_VERIFY(f.trust->caTrusted());
        f.trust->trustForSafari();
        f.service.commands.first().end(1);
        QVERIFY(!f.trust->caTrusted());
        QCOMPARE(f.notices, QStringList(notEnabled));
    }

    void overlappingCallsEachEndOnTheirOwn()
    {
        Fixture f;
        f.trust->trustForSafari(f.report());
        f.trust->refreshTrust();
        QTRY_COMPARE(f.test.started, 1);
        f.trust->trustForSafari(f.report());
        f.trust->trustForSafari();
        QCOMPARE(f.service.commands.size(), 3);
        f.service.commands.at(1).end(0);
        f.service.commands.at(2).end(1);
        f.service.commands.at(0).end(0);
        QCOMPARE(f.notices, QStringList(notEnabled));
        f.verdicts({false, true, false}); // the refresh, the second call, the first
        QTRY_COMPARE(f.reports, (QList<bool>{true, false}));
        QCOMPARE(f.notices, (QStringList{notEnabled, enabled, notEnabled}));
        QVERIFY(!f.trust->caTrusted());
        QCOMPARE(f.changed.size(), 2);
    }

    void destroyedWhileTheServiceInstalls()
    {
        Fixture f;
        f.verdicts({true});
        f.trust->trustForSafari(f.report());
        f.trust.reset();
        f.service.commands.first().end(0);
        QCoreApplication::processEvents();
        QCOMPARE(f.test.started, 0);
        QVERIFY(f.reports.isEmpty() && f.notices.isEmpty());
    }

    void destroyedDuringACheck()
    {
        Fixture f;
        f.trust->trustForSafari(f.report());
        f.service.commands.first().end(0);
        f.trust->refreshTrust();
        QTRY_COMPARE(f.test.started, 1);
        QElapsedTimer clock;
        clock.start();
        f.trust.reset();
        QVERIFY2(clock.elapsed() < 2000, "The end waited for the check");
        QCoreApplication::processEvents();
        QCOMPARE(f.test.started, 1); // the one in the queue was dropped
        QVERIFY(f.reports.isEmpty() && f.notices.isEmpty());
    }

    void destroyedByItsListeners_data()
    {
        QTest::addColumn<bool>("byDone");
        QTest::newRow("by the change") << false;
        QTest::newRow("by done") << true;
    }
    void destroyedByItsListeners()
    {
        QFETCH(bool, byDone);
        Fixture f;
        f.verdicts({true});
        if (byDone) {
            f.trust->trustForSafari([&f, kept = QString(40, QLatin1Char('x'))](bool trusted) {
                f.trust.reset();
                f.reports.append(trusted && kept.size() == 40);
            });
        } else {
            QObject::connect(f.trust.get(), &HttpsTrust::caTrustedChanged, this, [&f] { f.trust.reset(); });
            f.trust->trustForSafari(f.report());
        }
        f.service.commands.takeFirst().end(0);
        QTRY_VERIFY(!f.trust);
        QCOMPARE(f.reports, byDone ? QList<bool>{true} : QList<bool>());
        QCOMPARE(f.notices, byDone ? QStringList(enabled) : QStringList());
    }
};

ZEMRAK_TEST(trust, TrustTest, QCoreApplication)
#include "tst_trust.moc"
