#include "platform/linux/sleepinhibitors.h"

#include "platform/linux/businhibition.h"

#include <array>

namespace zemrak::linux_ {

namespace {

const QString applicationName = QStringLiteral("Zemrak Printer");

InhibitService logind(const QString &reason)
{
    return {
        .name = QStringLiteral("org.freedesktop.login1"),
        .path = QStringLiteral("/org/freedesktop/login1"),
        .interface = QStringLiteral("org.freedesktop.login1.Manager"),
        .inhibit = QStringLiteral("Inhibit"),
        .arguments = {QStringLiteral("idle"), applicationName, reason, QStringLiteral("block")},
        .release = {},
        .expected = true,
    };
}

InhibitService gnomeSession(const QString &reason)
{
    constexpr quint32 noWindow = 0;
    constexpr quint32 suspend = 4;
    return {
        .name = QStringLiteral("org.gnome.SessionManager"),
        .path = QStringLiteral("/org/gnome/SessionManager"),
        .interface = QStringLiteral("org.gnome.SessionManager"),
        .inhibit = QStringLiteral("Inhibit"),
        .arguments = {QStringLiteral("com.zemrak.Printer"), noWindow, reason, suspend},
        .release = QStringLiteral("Uninhibit"),
    };
}

InhibitService powerManagement(const QString &reason)
{
    return {
        .name = QStringLiteral("org.freedesktop.PowerManagement"),
        .path = QStringLiteral("/org/freedesktop/PowerManagement/Inhibit"),
        .interface = QStringLiteral("org.freedesktop.PowerManagement.Inhibit"),
        .inhibit = QStringLiteral("Inhibit"),
        .arguments = {applicationName, reason},
        .release = QStringLiteral("UnInhibit"),
    };
}

class SleepForbidden final : public ProcessActivities::Activity
{
public:
    SleepForbidden(const QDBusConnection &system, const QDBusConnection &session, const QString &reason)
        : m_inhibitions{BusInhibition(system, logind(reason)), BusInhibition(session, gnomeSession(reason)),
            BusInhibition(session, powerManagement(reason))}
    {
    }

private:
    std::array<BusInhibition, 3> m_inhibitions;
};

} // namespace

SleepInhibitors::SleepInhibitors(
    std::function<QDBusConnection()> systemBus, std::function<QDBusConnection()> sessionBus)
    : m_systemBus(std::move(systemBus))
    , m_sessionBus(std::move(sessionBus))
{
}

std::unique_ptr<ProcessActivities::Activity> SleepInhibitors::begin(IdleSleep idleSleep, const QString &reason)
{
    if (idleSleep == IdleSleep::Allowed)
        return std::make_unique<Activity>();
    return std::make_unique<SleepForbidden>(m_systemBus(), m_sessionBus(), reason);
}

} // namespace zemrak::linux_
