// The settings portal, asked without waiting and followed.
#include "platform/platform.h"
#include "support/privatebus.h"
#include "support/testmain.h"
#include "ui/kit/appearance.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QHash>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;

namespace {

const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interfaceName = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString gnomeGroup = QStringLiteral("org.gnome.desktop.interface");

/// The desktop's side, on a connection of its own.
class Portal final : public QDBusVirtualObject
{
public:
    explicit Portal(const QString &address)
        : m_bus(QDBusConnection::connectToBus(address, QStringLiteral("portal")))
    {
        m_bus.registerVirtualObject(path, this);
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

    void appear() { QVERIFY(m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"))); }
    void vanish() { m_bus.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop")); }
    void announce(const QString &group, const QString &key, const QVariant &value)
    {
        QDBusMessage signal = QDBusMessage::createSignal(path, interfaceName, QStringLiteral("SettingChanged"));
        signal.setArguments({group, key, QVariant::fromValue(QDBusVariant(value))});
        m_bus.send(signal);
    }

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() != QLatin1String("Read"))
            return false;
        const QString key = message.arguments().value(1).toString();
        if (!settings.contains(key))
            return connection.send(message.createErrorReply(
                QStringLiteral("org.freedesktop.portal.Error.NotFound"), QStringLiteral("not found")));
        const QVariant inner = QVariant::fromValue(QDBusVariant(settings.value(key)));
        return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(inner))));
    }

    QHash<QString, QVariant> settings;

private:
    QDBusConnection m_bus;
};

PrivateBus &bus()
{
    static PrivateBus theBus;
    return theBus;
}

} // namespace

class AppearanceTest : public QObject
{
    Q_OBJECT

public:
    static void initMain() { qputenv("DBUS_SESSION_BUS_ADDRESS", bus().address().toUtf8()); }

private Q_SLOTS:
    void takesWhatThePortalSays()
    {
        Portal portal(bus().address());
        portal.settings = {{QStringLiteral("color-scheme"), 1U}, {QStringLiteral("enable-animations"), false},
            {QStringLiteral("text-scaling-factor"), 1.25}};
        portal.appear();
        Appearance appearance(platform::makeAppearanceSettings());
        QTRY_VERIFY(appearance.isDark());
        QTRY_VERIFY(appearance.reducedMotion());
        QTRY_COMPARE(appearance.textScale(), 1.25);

        QSignalSpy changed(&appearance, &Appearance::changed);
        portal.announce(appearanceGroup, QStringLiteral("color-scheme"), 2U);
        QTRY_VERIFY(!appearance.isDark());
        portal.announce(gnomeGroup, QStringLiteral("enable-animations"), true);
        QTRY_VERIFY(!appearance.reducedMotion());
        portal.announce(gnomeGroup, QStringLiteral("text-scaling-factor"), 9.0);
        QTRY_COMPARE(appearance.textScale(), 1.5);
        QCOMPARE(changed.count(), 3);
        // Of no concern here, as is a value of the wrong kind.
        portal.announce(gnomeGroup, QStringLiteral("clock-format"), QStringLiteral("24h"));
        portal.announce(appearanceGroup, QStringLiteral("color-scheme"), QStringLiteral("dark"));
        portal.announce(gnomeGroup, QStringLiteral("text-scaling-factor"), 1.0);
        QTRY_COMPARE(appearance.textScale(), 1.0);
        QCOMPARE(changed.count(), 4);
    }

    void waitsForNothing()
    {
        Portal portal(bus().address());
        portal.settings = {{QStringLiteral("color-scheme"), 1U}};
        portal.appear();
        Appearance appearance(platform::makeAppearanceSettings());
        appearance.settle();
        QVERIFY(!appearance.isDark());
        QTRY_VERIFY(appearance.isDark());
    }

    void doesWithoutAPortal()
    {
        Appearance appearance(platform::makeAppearanceSettings());
        appearance.settle();
        QVERIFY(!appearance.isDark());
        QCOMPARE(appearance.reducedMotion(), false);
    }
};

ZEMRAK_TEST(appearance, AppearanceTest, QApplication)
#include "tst_appearance.moc"
