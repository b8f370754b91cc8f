#include "support/notificationserver.h"

#include <QDBusArgument>
#include <QDBusMessage>

#include <algorithm>

namespace zemrak::test {

namespace {

const QString serviceName = QStringLiteral("org.freedesktop.Notifications");

} // namespace

NotificationServer::NotificationServer(const QString &busAddress)
    : m_client(busAddress)
{
    m_client.provide(serviceName, QStringLiteral("/org/freedesktop/Notifications"), this);
}

NotificationServer::~NotificationServer()
{
    loseName();
}

void NotificationServer::loseName()
{
    m_client.bus.unregisterService(serviceName);
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
            m_client.bus.send(call.createReply(QVariant(m_capabilities)));
        else if (call.member() == QLatin1String("Notify"))
            m_client.bus.send(call.createReply(QVariant(show(call.arguments()))));
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
    const auto note = std::ranges::find(m_notes, title, &Note::title);
    return note == m_notes.cend() ? nullptr : &*note;
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
