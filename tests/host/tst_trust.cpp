// Trust in the service's certificate authority, by the exit status of the service's commands.
#include "host/httpstrust.h"
#include "support/recordingservice.h"
#include "support/testmain.h"

using namespace zemrak;
using namespace zemrak::test;
using namespace Qt::StringLiterals;

namespace {

const QString yes = u"تم تفعيل HTTPS لـ Safari|done 1"_s;
const QString no = u"لم يتم التفعيل (يمكنك إعادته لاحقًا من الإعدادات)|done 0"_s;

struct Fixture
{
    RecordingCommands service;
    std::unique_ptr<HttpsTrust> trust = std::make_unique<HttpsTrust>(service);
    QStringList told; ///< notices, changes, and what `done` was called with

    Fixture()
    {
        QObject::connect(trust.get(), &HttpsTrust::notice, [this](const QString &text) { told.append(text); });
        QObject::connect(trust.get(), &HttpsTrust::caTrustedChanged,
            [this] { told.append(trust->caTrusted() ? u"trusted"_s : u"not trusted"_s); });
    }
    void install()
    {
        trust->trustForSafari([this](bool trusted) { told.append(u"done %1"_s.arg(trusted)); });
    }
    /// Ends the oldest commands, which are these, with their statuses.
    void end(const QList<std::pair<const char *, int>> &commands)
    {
        for (const auto &[name, status] : commands) {
            QVERIFY(!service.commands.isEmpty());
            const RecordingCommands::Command command = service.commands.takeFirst();
            QCOMPARE(command.arguments, QStringList(QString::fromLatin1(name)));
            command.end(status);
        }
    }
    QString takeTold() { return std::exchange(told, {}).join(u'|'); }
};

} // namespace

class TrustTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Of several checks one runs at a time, so that the last result published is the freshest.
    void refreshing()
    {
        Fixture f;
        for (int i = 0; i < 3; ++i)
            f.trust->refreshTrust();
        QCOMPARE(f.service.commands.size(), 1);
        f.end({{"trust-status", 0}, {"trust-status", 0}});
        QVERIFY(f.trust->caTrusted());
        f.end({{"trust-status", 1}});
        QCOMPARE(f.takeTold(), u"trusted|not trusted"_s);
        QVERIFY(f.service.commands.isEmpty());
    }

    void installing()
    {
        Fixture f;
        f.install();
        f.end({{"trust-ca", 0}, {"trust-status", 0}});
        QCOMPARE(f.takeTold(), u"trusted|"_s + yes);
        // Refused, never launched or killed, installed yet not trusted, nobody can tell: each takes an earlier yes
        // back.
        for (const auto &[status, check] : {std::pair{1, -2}, {-1, -2}, {0, 1}, {0, 69}, {0, -1}}) {
            f.install();
            f.end({{"trust-ca", status}});
            if (check == 69 || check == -1)
                QTest::ignoreMessage(QtWarningMsg, "Trust in the certificate authority cannot be checked");
            if (check != -2)
                f.end({{"trust-status", check}});
            QCOMPARE(f.takeTold(), u"not trusted|"_s + no);
            QVERIFY(f.service.commands.isEmpty());
            f.trust->refreshTrust();
            f.end({{"trust-status", 0}});
            QCOMPARE(f.takeTold(), u"trusted"_s);
        }
    }

    void overlappingCallsEachEndOnTheirOwn()
    {
        Fixture f;
        f.install();
        f.trust->trustForSafari();
        f.trust->refreshTrust();
        f.end({{"trust-ca", 0}, {"trust-ca", 1}});
        QCOMPARE(f.takeTold(), no.section(u'|', 0, 0));
        f.end({{"trust-status", 0}, {"trust-status", 0}}); // the second is the check of the first call
        QCOMPARE(f.takeTold(), u"trusted|"_s + yes);
    }

    void destroyedAtAnyTime()
    {
        for (const QLatin1String when : {"install"_L1, "check"_L1, "change"_L1, "done"_L1}) {
            Fixture f;
            const auto destroyIf = [&f, when](QLatin1String moment) { moment == when ? f.trust.reset() : void(); };
            connect(f.trust.get(), &HttpsTrust::notice, this, [&] { f.told = {u"notice"_s}; });
            disconnect(f.trust.get(), &HttpsTrust::caTrustedChanged, nullptr, nullptr);
            connect(f.trust.get(), &HttpsTrust::caTrustedChanged, this, [&] { destroyIf("change"_L1); });
            f.trust->trustForSafari([&, kept = QString(40, u'x')](bool) {
                destroyIf("done"_L1);
                f.told.append(kept.left(1)); // what this lambda holds is still there
            });
            destroyIf("install"_L1);
            f.end({{"trust-ca", 0}});
            destroyIf("check"_L1);
            if (!f.service.commands.isEmpty())
                f.end({{"trust-status", 0}});
            QVERIFY(!f.trust);
            QCOMPARE(f.takeTold(), when == "done"_L1 ? u"notice|x"_s : QString());
        }
    }
};

ZEMRAK_TEST(trust, TrustTest, QCoreApplication)
#include "tst_trust.moc"
