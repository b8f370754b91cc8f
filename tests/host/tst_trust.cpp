#include "host/httpstrust.h"
#include "support/recordingservice.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace zemrak;
using namespace zemrak::test;

namespace {

const QString enabled = QStringLiteral("تم تفعيل HTTPS لـ Safari");
const QString notEnabled = QStringLiteral("لم يتم التفعيل (يمكنك إعادته لاحقًا من الإعدادات)");

struct Fixture
{
    RecordingCommands service;
    std::unique_ptr<HttpsTrust> trust = std::make_unique<HttpsTrust>(service);
    QSignalSpy changed{trust.get(), &HttpsTrust::caTrustedChanged};
    QStringList order; ///< notices, and what `done` was told

    Fixture()
    {
        QObject::connect(trust.get(), &HttpsTrust::notice, [this](const QString &text) { order.append(text); });
    }
    HttpsTrust::Done report()
    {
        return [this](bool trusted) { order.append(trusted ? QStringLiteral("yes") : QStringLiteral("no")); };
    }
    /// Ends the oldest command, which is `name`, with `status`.
    void end(const char *name, int status)
    {
        QVERIFY(!service.commands.isEmpty());
        const RecordingCommands::Command command = service.commands.takeFirst();
        QCOMPARE(command.arguments, QStringList(QString::fromLatin1(name)));
        command.end(status);
    }
};

} // namespace

class TrustTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Freshest last: of several checks one runs at a time.
    void refreshPublishesSilently()
    {
        Fixture f;
        f.trust->refreshTrust();
        f.trust->refreshTrust();
        f.trust->refreshTrust();
        QCOMPARE(f.service.commands.size(), 1);
        f.end("trust-status", 0);
        QVERIFY(f.trust->caTrusted());
        f.end("trust-status", 0);
        f.end("trust-status", 1);
        QVERIFY(!f.trust->caTrusted());
        QCOMPARE(f.changed.size(), 2);
        QVERIFY(f.order.isEmpty() && f.service.commands.isEmpty());
    }

    void installs_data()
    {
        QTest::addColumn<int>("install");
        QTest::addColumn<int>("status"); // of the check; it is made only after a success
        QTest::addColumn<bool>("trusted");
        QTest::newRow("installed and confirmed") << 0 << 0 << true;
        QTest::newRow("installed, yet not trusted") << 0 << 1 << false;
        QTest::newRow("installed, nobody can tell") << 0 << 69 << false;
        QTest::newRow("refused") << 1 << 0 << false;
        QTest::newRow("never launched, or killed") << -1 << 0 << false;
    }
    void installs()
    {
        QFETCH(const int, install);
        QFETCH(const int, status);
        QFETCH(const bool, trusted);
        Fixture f;
        f.trust->refreshTrust();
        f.end("trust-status", 0); // an earlier yes does not outlive a no
        f.trust->trustForSafari(f.report());
        f.end("trust-ca", install);
        if (install == 0)
            f.end("trust-status", status);
        QVERIFY(f.service.commands.isEmpty());
        QCOMPARE(f.order,
            trusted ? (QStringList{enabled, QStringLiteral("yes")}) : (QStringList{notEnabled, QStringLiteral("no")}));
        QCOMPARE(f.trust->caTrusted(), trusted);
    }

    void overlappingCallsEachEndOnTheirOwn()
    {
        Fixture f;
        f.trust->trustForSafari(f.report());
        f.trust->trustForSafari();
        f.trust->refreshTrust();
        f.end("trust-ca", 0);
        f.end("trust-ca", 1);
        QCOMPARE(f.order, QStringList(notEnabled));
        f.end("trust-status", 0);
        f.end("trust-status", 0); // the check of the first call
        QCOMPARE(f.order, (QStringList{notEnabled, enabled, QStringLiteral("yes")}));
        QVERIFY(f.trust->caTrusted());
    }

    void destroyedAtAnyTime_data()
    {
        QTest::addColumn<QString>("when");
        for (const char *when : {"install", "check", "change", "done"})
            QTest::newRow(when) << QString::fromLatin1(when);
    }
    void destroyedAtAnyTime()
    {
        QFETCH(const QString, when);
        Fixture f;
        const auto destroy = [&f] { f.trust.reset(); };
        if (when == QLatin1String("change"))
            QObject::connect(f.trust.get(), &HttpsTrust::caTrustedChanged, this, destroy);
        const bool byDone = when == QLatin1String("done");
        f.trust->trustForSafari([&, kept = QString(40, QLatin1Char('x'))](bool) {
            if (byDone)
                destroy();
            f.order.append(kept.left(1));
        });
        if (when == QLatin1String("install"))
            destroy();
        f.end("trust-ca", 0);
        if (when == QLatin1String("check"))
            destroy();
        if (!f.service.commands.isEmpty())
            f.end("trust-status", 0);
        QVERIFY(!f.trust);
        QCOMPARE(f.order, byDone ? (QStringList{enabled, QStringLiteral("x")}) : QStringList());
    }
};

ZEMRAK_TEST(trust, TrustTest, QCoreApplication)
#include "tst_trust.moc"
