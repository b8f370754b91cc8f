// The login item and the sleep inhibitor: the person's wishes, kept over restarts and over refusals.
#include "host/keepawake.h"
#include "host/launchatlogin.h"
#include "support/fakeloginitem.h"
#include "support/manualclock.h"
#include "support/rows.h"
#include "support/testmain.h"

#include <QTemporaryDir>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

/// Notes each activity as it begins and ends.
class FakeActivities final : public ProcessActivities
{
public:
    std::unique_ptr<Activity> begin(IdleSleep idleSleep, const QString &reason) override
    {
        struct Held : Activity
        {
            explicit Held(QString &calls)
                : log(calls)
            {
            }
            ~Held() override { log += u'-'; }
            QString &log;
        };
        log += idleSleep == IdleSleep::Forbidden ? u"+"_s : u"allowed"_s;
        lastReason = reason;
        return std::make_unique<Held>(log);
    }
    QString log;
    QString lastReason;
};

struct Fixture
{
    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(u"settings.ini"_s)};
    ManualClock clock;
    FakeLoginItem item;
    QStringList told;

    explicit Fixture(bool works = true) { item.works = works; }

    std::unique_ptr<LaunchAtLogin> make()
    {
        auto login = std::make_unique<LaunchAtLogin>(item, defaults, clock, u"/here"_s);
        QObject::connect(login.get(), &LaunchAtLogin::notice, [this](const QString &text) { told.append(text); });
        QObject::connect(login.get(), &LaunchAtLogin::logged, [this](const QString &text) { told.append(text); });
        QObject::connect(login.get(), &LaunchAtLogin::loginNeedsApprovalChanged, [this] { told.append(u"!"_s); });
        return login;
    }
    /// The wish, and the folder it is for.
    [[nodiscard]] QString kept() const
    {
        return (defaults.boolean("loginWanted"_L1) ? u"wanted "_s : QString())
            + defaults.string("loginRegisteredPath"_L1);
    }
};

} // namespace

class LaunchAtLoginTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusalsAreLoggedAndTheWishIsKept()
    {
        Fixture f(false);
        const auto login = f.make();
        QSignalSpy changed(login.get(), &LaunchAtLogin::launchAtLoginChanged);
        login->setLaunchAtLogin(true);
        QVERIFY(!login->launchAtLogin());
        QCOMPARE(f.kept(), u"wanted /here"_s);
        QCOMPARE(f.told, QStringList(u"\nLogin item: not on this platform"_s));

        f.item.works = true; // the next launch tries again
        f.make()->healLoginItemIfNeeded();
        login->setLaunchAtLogin(true);
        login->refreshLoginState();
        QVERIFY(login->launchAtLogin());
        QCOMPARE(changed.count(), 1);
        f.item.works = false;
        login->setLaunchAtLogin(false);
        QVERIFY(login->launchAtLogin());
        QCOMPARE(f.kept(), u"/here"_s);
    }

    void healing()
    {
        // The wish, the item's status, the folder it was registered for; then the calls, and the folder kept.
        for (const QStringList &row : rowsOf(R"(
                never asked for     |        | 0 |       |       |    |
                not wanted any more |        | 3 | /Here |       |    | /Here
                sound               | wanted | 1 | /here |       |    | /here
                moved               | wanted | 1 | /Here |       | ur | /here
                no folder stored    | wanted | 1 |       |       | ur | /here
                switched off        | wanted | 2 | /here |       | ur | /here
                gone                | wanted | 0 | /here |       | ur | /here
                broken              | wanted | 3 | /Here |       | ur | /here
                refused             | wanted | 2 | /Here | fails | ur | /Here)")) {
            Fixture f(row[4].isEmpty());
            f.defaults.setBoolean("loginWanted"_L1, !row[1].isEmpty());
            if (!row[3].isEmpty())
                f.defaults.setString("loginRegisteredPath"_L1, row[3]);
            f.item.current = LoginItemStatus(row[2].toInt());
            const auto login = f.make();
            QCOMPARE(login->loginNeedsApproval(), row[2] == u"2");
            login->healLoginItemIfNeeded();
            QCOMPARE(row[0] + f.item.calls + f.kept().section(u' ', -1), row[0] + row[5] + row[6]);
            QCOMPARE(login->launchAtLogin(), f.item.current == LoginItemStatus::Enabled);
            QCOMPARE(f.told.join(u' '),
                row[4].isEmpty() ? row[2] == u"2" ? u"!"_s : QString()
                                 : u"\nLogin item re-register: not on this platform"_s);
        }
    }

    void repairByHandSaysHowItWent()
    {
        Fixture f(false);
        const auto login = f.make();
        login->reRegisterLogin();
        QCOMPARE(f.item.calls + f.kept(), u"ur"_s);
        f.item.works = true;
        login->reRegisterLogin();
        QVERIFY(login->launchAtLogin());
        QCOMPARE(f.kept(), u"wanted /here"_s);
        QCOMPARE(
            f.told, (QStringList{u"تعذرت إعادة التسجيل: not on this platform"_s, u"أُعيد تسجيل التشغيل عند الدخول"_s}));
    }

    void proofOfAnAutomaticStart()
    {
        QVERIFY(isAutomaticStart({}, 299'999ms) && !isAutomaticStart({u"--automatic"_s}, 300s));
        QVERIFY(isAutomaticStart({u"x"_s, u"--automatic-start"_s}, 400h));

        Fixture f;
        const auto login = f.make();
        const QSignalSpy changed(login.get(), &LaunchAtLogin::lastSystemStartChanged);
        QVERIFY(!login->lastSystemStart().isValid());
        login->recordSystemStart();
        QCOMPARE(changed.count(), 1);
        QCOMPARE(login->lastSystemStart().toMSecsSinceEpoch(), f.clock.wallTime());
        QCOMPARE(f.make()->lastSystemStart(), login->lastSystemStart());
        f.defaults.setString("lastSystemStart"_L1, u"yesterday"_s);
        QVERIFY(!f.make()->lastSystemStart().isValid());
    }

    void oneActivityKeepsTheComputerAwake()
    {
        Fixture f;
        FakeActivities activities;
        {
            KeepAwake awake(activities, f.defaults);
            QSignalSpy changed(&awake, &KeepAwake::changed);
            awake.restore();
            awake.set(false);
            QCOMPARE(activities.log + QString::number(changed.count()), u"0"_s);
            awake.set(true);
            awake.set(true);
            QVERIFY(awake.isOn());
            QCOMPARE(activities.log + QString::number(changed.count()), u"+-+1"_s);
        }
        KeepAwake again(activities, f.defaults);
        QVERIFY(again.isOn());
        QCOMPARE(activities.log, u"+-+-"_s);
        again.restore();
        again.set(false);
        QCOMPARE(activities.log, u"+-+-+-"_s);
        QCOMPARE(activities.lastReason, u"Keep the cashier Mac awake so print requests are served"_s);
        QVERIFY(!KeepAwake(activities, f.defaults).isOn());
    }
};

ZEMRAK_TEST(launchatlogin, LaunchAtLoginTest, QCoreApplication)
#include "tst_launchatlogin.moc"
