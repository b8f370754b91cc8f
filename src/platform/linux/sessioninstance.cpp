#include "platform/linux/sessioninstance.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QStandardPaths>

namespace zemrak::linux_ {

namespace {

Q_LOGGING_CATEGORY(lcInstance, "zemrak.platform")

constexpr int patienceMs = 2000; ///< for each question to the bus or to the other copy

QString busName()
{
    return QStringLiteral("com.zemrak.Printer");
}

QString objectPath()
{
    return QStringLiteral("/com/zemrak/Printer");
}

QString runtimeFile(const QString &name)
{
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QLatin1Char('/') + name;
}

QString socketFile()
{
    return runtimeFile(QStringLiteral("zemrak-printer.socket"));
}

constexpr char activationToken[] = "activation-token";
constexpr char startupId[] = "desktop-startup-id";

// The launcher's permission to raise a window travels on to the copy that has the window.
QVariantMap launchersPermission()
{
    QVariantMap data;
    if (const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN"); !token.isEmpty())
        data.insert(QLatin1String(activationToken), token);
    if (const QString id = qEnvironmentVariable("DESKTOP_STARTUP_ID"); !id.isEmpty())
        data.insert(QLatin1String(startupId), id);
    return data;
}

QDBusMessage busCall(const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"), method);
    message.setArguments(arguments);
    return message;
}

void askOverBus(const QDBusConnection &bus)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        busName(), objectPath(), QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
    message.setArguments({launchersPermission()});
    bus.call(message, QDBus::Block, patienceMs);
}

void askOverSocket()
{
    QLocalSocket socket;
    socket.connectToServer(socketFile(), QIODevice::ReadWrite);
    if (socket.waitForConnected(patienceMs))
        socket.waitForDisconnected(patienceMs);
}

} // namespace

SessionInstance::SessionInstance()
    : m_bus(QDBusConnection::sessionBus())
{
    new ApplicationAdaptor(this);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *asking = m_server.nextPendingConnection()) {
            asking->disconnectFromServer();
            asking->deleteLater();
            activate({});
        }
    });
}

SessionInstance::~SessionInstance()
{
    if (m_ownsName)
        m_bus.call(busCall(QStringLiteral("ReleaseName"), {busName()}), QDBus::NoBlock);
}

bool SessionInstance::claim()
{
    if (!claimName() || !claimLock())
        return false;
    listen();
    return true;
}

bool SessionInstance::claimName()
{
    if (!m_bus.isConnected()) {
        qCInfo(lcInstance) << "No session bus; one copy is ensured by a lock alone";
        return true;
    }
    // The object stands before the name is asked for: whoever sees the name taken can call it at once.
    m_bus.registerObject(objectPath(), this, QDBusConnection::ExportAdaptors);
    constexpr uint doNotQueue = 4;
    constexpr uint primaryOwner = 1;
    constexpr uint alreadyOwner = 4;
    const QDBusReply<uint> answer
        = m_bus.call(busCall(QStringLiteral("RequestName"), {busName(), doNotQueue}), QDBus::Block, patienceMs);
    if (!answer.isValid()) {
        qCWarning(lcInstance) << "The session bus gave no name:" << answer.error().message();
        return true;
    }
    m_ownsName = answer.value() == primaryOwner || answer.value() == alreadyOwner;
    if (!m_ownsName)
        askOverBus(m_bus);
    return m_ownsName;
}

bool SessionInstance::claimLock()
{
    switch (m_lock.tryLock(runtimeFile(QStringLiteral("zemrak-printer.lock")))) {
    case RuntimeLock::Outcome::HeldByAnother:
        askOverSocket();
        return false;
    case RuntimeLock::Outcome::Unavailable:
        qCWarning(lcInstance) << "The runtime folder takes no lock";
        return true;
    case RuntimeLock::Outcome::Taken:
        break;
    }
    return true;
}

void SessionInstance::listen()
{
    QLocalServer::removeServer(socketFile());
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server.listen(socketFile()))
        qCWarning(lcInstance) << "Other copies cannot ask for the window:" << m_server.errorString();
}

void SessionInstance::activate(const QVariantMap &platformData)
{
    // Qt's window system plugins take the permission from the environment when a window asks to be raised.
    if (const QByteArray token = platformData.value(QLatin1String(activationToken)).toString().toUtf8();
        !token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token);
    if (m_show)
        m_show();
}

} // namespace zemrak::linux_
