#include "platform/linux/statusnotifierhost.h"

#include "platform/linux/buscall.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>

namespace zemrak::linux_ {

namespace {

const QLatin1String registrarName("org.kde.StatusNotifierWatcher");
const QLatin1String registrarPath("/StatusNotifierWatcher");

} // namespace

StatusNotifierHost::StatusNotifierHost(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
{
    if (!m_bus.isConnected())
        return;
    m_registrar.setConnection(m_bus);
    m_registrar.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_registrar.addWatchedService(registrarName);
    connect(&m_registrar, &QDBusServiceWatcher::serviceRegistered, this, &StatusNotifierHost::ask);
    connect(&m_registrar, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        delete m_question;
        setPresent(false);
    });
    for (const QLatin1String signal :
        {QLatin1String("StatusNotifierHostRegistered"), QLatin1String("StatusNotifierHostUnregistered")})
        m_bus.connect(QString(), registrarPath, registrarName, signal, this, SLOT(ask()));
    ask();
}

void StatusNotifierHost::ask()
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        registrarName, registrarPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question.setArguments({QString(registrarName), QStringLiteral("IsStatusNotifierHostRegistered")});
    question.setAutoStartService(false); // a question must not start a panel
    delete m_question;
    // No time limit: a registrar that is slow at login sends no signal later. When it goes away the bus ends the call.
    m_question = callAsync(
        m_bus, question, this,
        [this](const QDBusMessage &reply) {
            m_question.clear();
            setPresent(QDBusReply<QVariant>(reply).value().toBool());
        },
        noTimeLimitMs);
}

void StatusNotifierHost::setPresent(bool present)
{
    if (m_present == present)
        return;
    m_present = present;
    Q_EMIT presentChanged();
}

} // namespace zemrak::linux_
