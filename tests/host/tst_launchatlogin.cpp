#include "host/keepawake.h"
#include "host/launchatlogin.h"
#include "support/manualclock.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

/// A desktop that does as it is told, unless it is to refuse.
class FakeItem final : public LoginItem
{
public:
    LoginItemStatus status() const override { return now; }
    std::optional<QString> registerItem() override { return change(QLatin1Char('r'), LoginItemStatus::Enabled); }
    std::optional<QString> unregisterItem() override
    {
        return change(QLatin1Char('u'), LoginItemStatus::NotRegistered);
    }

    LoginItemStatus now = LoginItemStatus::NotRegistered;
    bool refuses = false;
    QString calls;

private:
    std::optional<QString> change(QChar call, LoginItemStatus to)
    {
        calls += call;
        if (refuses)
            return QStringLiteral("no room");
        now = to;
        return std::nullopt;
    }
};

class FakeActivities final : public ProcessActivities
{
public:
    std::unique_ptr<Activity> begin(IdleSleep idleSleep, const QString &reason) override
    {
        struct Held : Activity
        {
            explicit Held(int &count)
                : held(count)
            {
                ++held;
            }
            ~Held() override { --held; }
            int &held;
        };
        heldAtBegin = held;
        forbidden = idleSleep == IdleSleep::Forbidden;
        lastReason = reason;
        return std::make_unique<Held>(held);
    }
    int held = 0;
    int heldAtBegin = 0;
    bool forbidden = false;
    QString lastReason;
};

struct Fixture
{
    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("settings.ini"))};
    ManualClock clock;
    FakeItem item;
    QStringList notices;
    QString log;

    std::unique_ptr<LaunchAtLogin> make()
    {
        auto login = std::make_unique<LaunchAtLogin>(item, defaults, clock, QStringLiteral("/here"));
        QObject::connect(login.get(), &LaunchAtLogin::notice, [this](const QString &text) { notices.append(text); });
        QObject::connect(login.get(), &LaunchAtLogin::logged, [this](const QString &text) { log += text; });
        return login;
    }
    [[nodiscard]] bool wanted() const { return defaults.boolean(QLatin1String("loginWanted")); }
    [[nodiscard]] QString path() const { return defaults.string(QLatin1String("loginRegisteredPath")); }
};

} // namespace

class LaunchAtLoginTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusalsAreLoggedAndTheWishIsKept()
    {
        Fixture f;
        const auto login = f.make();
        QSignalSpy changed(login.get(), &LaunchAtLogin::launchAtLoginChanged);
        f.item.refuses = true;
        login->setLaunchAtLogin(true);
        QVERIFY(f.wanted() && !login->launchAtLogin());
        QCOMPARE(f.path(), QStringLiteral("/here"));
        QCOMPARE(f.log, QStringLiteral("\nLogin item: no room"));

        f.item.refuses = false; // the next launch tries again
        const auto next = f.make();
        next->healLoginItemIfNeeded();
        QVERIFY(next->launchAtLogin());

        login->refreshLoginState();
        login->refreshLoginState();
        QCOMPARE(changed.count(), 1);
        f.item.refuses = true;
        login->setLaunchAtLogin(false);
        QVERIFY(!f.wanted() && login->launchAtLogin());
        QCOMPARE(f.path(), QStringLiteral("/here"));
        QVERIFY(f.notices.isEmpty());
    }

    void healing_data()
    {
        QTest::addColumn<bool>("wanted");
        QTest::addColumn<LoginItemStatus>("status");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("refuses");
        QTest::addColumn<QString>("calls");
        QTest::addColumn<QString>("storedAfter");
        using enum LoginItemStatus;
        const QString here = QStringLiteral("/here");
        const QString there = QStringLiteral("/Here");
        const QString repair = QStringLiteral("ur");
        QTest::newRow("never asked for") << false << NotRegistered << QString() << false << QString() << QString();
        QTest::newRow("not wanted any more") << false << NotFound << there << false << QString() << there;
        QTest::newRow("sound") << true << Enabled << here << false << QString() << here;
        QTest::newRow("moved") << true << Enabled << there << false << repair << here;
        QTest::newRow("no path stored") << true << Enabled << QString() << false << repair << here;
        QTest::newRow("switched off") << true << RequiresApproval << here << false << repair << here;
        QTest::newRow("gone") << true << NotRegistered << here << false << repair << here;
        QTest::newRow("broken") << true << NotFound << there << false << repair << here;
        QTest::newRow("refused") << true << Enabled << there << true << repair << there;
    }
    void healing()
    {
        QFETCH(bool, wanted);
        QFETCH(LoginItemStatus, status);
        QFETCH(QString, stored);
        QFETCH(bool, refuses);
        QFETCH(QString, calls);
        QFETCH(QString, storedAfter);
        Fixture f;
        if (wanted)
            f.defaults.setBoolean(QLatin1String("loginWanted"), true);
        if (!stored.isNull())
            f.defaults.setString(QLatin1String("loginRegisteredPath"), stored);
        f.item.now = status;
        f.item.refuses = refuses;
        const auto login = f.make();
        login->healLoginItemIfNeeded();
        QCOMPARE(f.item.calls, calls);
        QCOMPARE(f.path(), storedAfter);
        QCOMPARE(login->launchAtLogin(), f.item.now == LoginItemStatus::Enabled);
        QCOMPARE(login->loginNeedsApproval(), f.item.now == LoginItemStatus::RequiresApproval);
        QCOMPARE(f.log, refuses ? QStringLiteral("\nLogin item re-register: no room") : QString());
        QVERIFY(f.notices.isEmpty());
    }

    void repairByHandSaysHowItWent()
    {
        Fixture f;
        const auto login = f.make();
        f.item.refuses = true;
        login->reRegisterLogin();
        QCOMPARE(f.item.calls, QStringLiteral("ur"));
        QVERIFY(!f.wanted() && f.path().isNull());
        f.item.refuses = false;
        login->reRegisterLogin();
        QVERIFY(f.wanted() && login->launchAtLogin());
        QCOMPARE(f.path(), QStringLiteral("/here"));
        QCOMPARE(f.notices,
            QStringList(
                {QStringLiteral("تعذرت إعادة التسجيل: no room"), QStringLiteral("أُعيد تسجيل التشغيل عند الدخول")}));
        QVERIFY(f.log.isEmpty());
    }

    void proofOfAnAutomaticStart()
    {
        QVERIFY(isAutomaticStart({}, 299'900ms) && !isAutomaticStart({QStringLiteral("--automatic")}, 300s));
        QVERIFY(isAutomaticStart({QStringLiteral("x"), QStringLiteral("--automatic-start")}, 400h));

        Fixture f;
        const auto login = f.make();
        QVERIFY(!login->lastSystemStart().isValid());
        login->recordSystemStart();
        QCOMPARE(login->lastSystemStart().toMSecsSinceEpoch(), f.clock.wallTime());
        QCOMPARE(f.make()->lastSystemStart(), login->lastSystemStart());
        f.defaults.setString(QLatin1String("lastSystemStart"), QStringLiteral("yesterday"));
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
            QCOMPARE(activities.held + static_cast<int>(changed.count()), 0);
            awake.set(true);
            awake.set(true);
            QVERIFY(awake.isOn() && activities.forbidden);
            QCOMPARE(activities.held, 1);
            QCOMPARE(activities.heldAtBegin, 0);
            QCOMPARE(changed.count(), 1);
        }
        QCOMPARE(activities.held, 0);
        KeepAwake again(activities, f.defaults);
        QVERIFY(again.isOn() && activities.held == 0);
        again.restore();
        QCOMPARE(activities.held, 1);
        QCOMPARE(activities.lastReason, QStringLiteral("Keep the cashier Mac awake so print requests are served"));
        again.set(false);
        QCOMPARE(activities.held, 0);
        QVERIFY(!KeepAwake(activities, f.defaults).isOn());
    }
};

ZEMRAK_TEST(launchatlogin, LaunchAtLoginTest, QCoreApplication)
#include "tst_launchatlogin.moc"
