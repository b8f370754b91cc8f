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

using namespace zemrak;
using namespace zemrak::test;
using namespace Qt::StringLiterals;

namespace {

const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString interfaceName = u"org.freedesktop.portal.Settings"_s;
const QString appearanceGroup = u"org.freedesktop.appearance"_s;
const QString gnomeGroup = u"org.gnome.desktop.interface"_s;

/// The desktop's side, on a connection of its own.
class Portal final : public QDBusVirtualObject
{
public:
    Portal(const QString &address, const QHash<QString, QVariant> &settings)
        : m_bus(QDBusConnection::connectToBus(address, u"portal"_s))
        , m_settings(settings)
    {
        m_bus.registerVirtualObject(path, this);
        if (!m_bus.registerService(u"org.freedesktop.portal.Desktop"_s))
            qFatal("there is a portal on the test's bus");
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(u"portal"_s); }

    void announce(const QString &group, const QString &key, const QVariant &value)
    {
        QDBusMessage signal = QDBusMessage::createSignal(path, interfaceName, u"SettingChanged"_s);
        signal.setArguments({group, key, QVariant::fromValue(QDBusVariant(value))});
        m_bus.send(signal);
    }

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        const QString key = message.arguments().value(1).toString();
        if (message.member() != "Read"_L1)
            return false;
        if (!m_settings.contains(key))
            return connection.send(
                message.createErrorReply(u"org.freedesktop.portal.Error.NotFound"_s, u"not found"_s));
        const QVariant inner = QVariant::fromValue(QDBusVariant(m_settings.value(key)));
        return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(inner))));
    }

private:
    QDBusConnection m_bus;
    QHash<QString, QVariant> m_settings;
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
        Portal portal(bus().address(),
            {{u"color-scheme"_s, 1U}, {u"enable-animations"_s, false}, {u"text-scaling-factor"_s, 1.25}});
        Appearance appearance(platform::makeAppearanceSettings());
        appearance.settle();
        QVERIFY(!appearance.isDark()); // nothing waits for the portal
        QTRY_VERIFY(appearance.isDark() && appearance.reducedMotion() && appearance.textScale() == 1.25);

        QSignalSpy changed(&appearance, &Appearance::changed);
        portal.announce(appearanceGroup, u"color-scheme"_s, 2U);
        QTRY_VERIFY(!appearance.isDark());
        portal.announce(gnomeGroup, u"enable-animations"_s, true);
        QTRY_VERIFY(!appearance.reducedMotion());
        portal.announce(gnomeGroup, u"text-scaling-factor"_s, 9.0);
        QTRY_COMPARE(appearance.textScale(), 1.5);
        QCOMPARE(changed.count(), 3);
        // Of no concern here, as is a value of the wrong kind.
        portal.announce(gnomeGroup, u"clock-format"_s, u"24h"_s);
        portal.announce(appearanceGroup, u"color-scheme"_s, u"dark"_s);
        portal.announce(gnomeGroup, u"text-scaling-factor"_s, 1.0);
        QTRY_COMPARE(appearance.textScale(), 1.0);
        QCOMPARE(changed.count(), 4);
    }

    void doesWithoutAPortal()
    {
        Appearance appearance(platform::makeAppearanceSettings());
        appearance.settle();
        QVERIFY(!appearance.isDark() && !appearance.reducedMotion());
    }
};

ZEMRAK_TEST(appearance, AppearanceTest, QApplication)
#include "tst_appearance.moc"
