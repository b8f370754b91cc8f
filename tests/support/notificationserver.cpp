#include "support/notificationserver.h"

#include <QDBusArgument>
#include <QDBusMessage>

namespace zemrak::test {

namespace {

QString freshConnectionName()
{
    static int count = 0;
    return QStringLiteral("notification-server-%1").arg(++count);
}

} // namespace

NotificationServer::NotificationServer(const QString &busAddress)
    : m_connectionName(freshConnectionName())
    , m_bus(QDBusConnection::connectToBus(busAddress, m_connectionName))
{
    const bool up = m_bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                        QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals)
        && m_bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
    if (!up)
        qFatal("The fake notification server cannot start");
}

NotificationServer::~NotificationServer()
{
    loseName();
    QDBusConnection::disconnectFromBus(m_connectionName);
}

void NotificationServer::loseName()
{
    m_bus.unregisterService(QStringLiteral("org.freedesktop.Notifications"));
}

bool NotificationServer::evades()
{
    ++m_calls;
    if (m_mood == Mood::Hanging) {
        setDelayedReply(true);
        m_hanging.append(message());
        return true;
    }
    if (m_mood == Mood::Refusing) {
        sendErrorReply(QDBusError::AccessDenied, QStringLiteral("not today"));
        return true;
    }
    return false;
}

void NotificationServer::wakeUp()
{
    m_mood = Mood::Serving;
    for (const QDBusMessage &call : std::exchange(m_hanging, {})) {
        if (call.member() == QLatin1String("GetCapabilities"))
            m_bus.send(call.createReply(QVariant(m_capabilities)));
        else if (call.member() == QLatin1String("Notify"))
            m_bus.send(call.createReply(QVariant(show(call.arguments()))));
    }
}

uint NotificationServer::show(const QVariantList &call)
{
    m_notes.append({++m_lastNumber, call.at(3).toString(), call.at(4).toString(), call.at(5).toStringList(),
        qdbus_cast<QVariantMap>(call.at(6)), false});
    return m_lastNumber;
}

const NotificationServer::Note *NotificationServer::find(const QString &title) const
{
    for (const Note &note : m_notes) {
        if (note.title == title)
            return &note;
    }
    return nullptr;
}

void NotificationServer::click(uint number, const QString &token)
{
    if (!token.isNull())
        Q_EMIT ActivationToken(number, token);
    Q_EMIT ActionInvoked(number, QStringLiteral("default"));
}

QStringList NotificationServer::GetCapabilities()
{
    return evades() ? QStringList() : m_capabilities;
}

QString NotificationServer::GetServerInformation(QString &vendor, QString &version, QString &specVersion)
{
    if (evades())
        return {};
    vendor = QStringLiteral("tests");
    version = QStringLiteral("1");
    specVersion = QStringLiteral("1.2");
    return QStringLiteral("fake");
}

uint NotificationServer::Notify(const QString &, uint, const QString &, const QString &, const QString &,
    const QStringList &, const QVariantMap &, int)
{
    return evades() ? 0 : show(message().arguments());
}

void NotificationServer::CloseNotification(uint number)
{
    if (evades())
        return;
    for (Note &note : m_notes) {
        if (note.number == number)
            note.closed = true;
    }
    Q_EMIT NotificationClosed(number, 3);
}

} // namespace zemrak::test
