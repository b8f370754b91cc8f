#include "platform/linux/sessioninstance.h"

#include "platform/linux/buscall.h"
#include "platform/linux/instancenames.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QThread>

namespace zemrak::linux_ {

namespace {

Q_LOGGING_CATEGORY(lcInstance, "zemrak.platform")

constexpr int patienceMs = 2000; ///< for each question to the bus or to the other copy
constexpr qint64 longestWaitMs = 10'000; ///< a copy on its way out has a service to wait for
constexpr unsigned long pauseMs = 50;

QString socketFile()
{
    return runtimeFile(QStringLiteral("zemrak-printer.socket"));
}

constexpr char activationToken[] = "activation-token";
constexpr char startupId[] = "desktop-startup-id";

// The launcher's activation token, handed on to the copy that has the window.
QVariantMap activationData()
{
    QVariantMap data;
    if (const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN"); !token.isEmpty())
        data.insert(QLatin1String(activationToken), token);
    if (const QString id = qEnvironmentVariable("DESKTOP_STARTUP_ID"); !id.isEmpty())
        data.insert(QLatin1String(startupId), id);
    return data;
}

// True when the other copy says that it heard.
bool askOverBus(const QDBusConnection &bus)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        busName(), objectPath(), QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
    message.setArguments({activationData()});
    return bus.call(message, QDBus::Block, patienceMs).type() == QDBusMessage::ReplyMessage;
}

constexpr char heard[] = "heard";

bool askOverSocket()
{
    QLocalSocket socket;
    socket.connectToServer(socketFile(), QIODevice::ReadWrite);
    return socket.waitForConnected(patienceMs) && socket.waitForReadyRead(patienceMs) && socket.readAll() == heard;
}

} // namespace

SessionInstance::SessionInstance()
    : m_bus(QDBusConnection::sessionBus())
{
    new ApplicationAdaptor(this);
    new StatusAdaptor(this);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *asking = m_server.nextPendingConnection()) {
            connect(asking, &QLocalSocket::disconnected, asking, &QObject::deleteLater);
            asking->write(heard);
            asking->disconnectFromServer();
            activate({});
        }
    });
}

SessionInstance::~SessionInstance()
{
    releaseName();
}

bool SessionInstance::claim()
{
    QElapsedTimer elapsed;
    elapsed.start();
    Outcome outcome = tryClaim();
    while (outcome == Outcome::AnotherSilent && elapsed.elapsed() < longestWaitMs) {
        QThread::msleep(pauseMs);
        outcome = tryClaim();
    }
    if (outcome == Outcome::Ours)
        listen();
    return outcome == Outcome::Ours;
}

SessionInstance::Outcome SessionInstance::tryClaim()
{
    const Outcome name = claimName();
    if (name != Outcome::Ours)
        return name;
    const Outcome lock = claimLock();
    if (lock != Outcome::Ours)
        releaseName();
    return lock;
}

void SessionInstance::releaseName()
{
    if (std::exchange(m_ownsName, false))
        m_bus.call(busDaemonCall(QStringLiteral("ReleaseName"), {busName()}), QDBus::NoBlock);
}

SessionInstance::Outcome SessionInstance::claimName()
{
    if (!m_bus.isConnected()) {
        qCDebug(lcInstance) << "No session bus; one copy is ensured by a lock alone";
        return Outcome::Ours;
    }
    // The object is registered before the name is requested: whoever sees the name taken can call it at once.
    m_bus.registerObject(objectPath(), this, QDBusConnection::ExportAdaptors);
    constexpr uint doNotQueue = 4;
    constexpr uint primaryOwner = 1;
    constexpr uint alreadyOwner = 4;
    const QDBusReply<uint> answer
        = m_bus.call(busDaemonCall(QStringLiteral("RequestName"), {busName(), doNotQueue}), QDBus::Block, patienceMs);
    if (!answer.isValid()) {
        qCWarning(lcInstance) << "The session bus gave no name:" << answer.error().message();
        return Outcome::Ours;
    }
    m_ownsName = answer.value() == primaryOwner || answer.value() == alreadyOwner;
    if (m_ownsName)
        return Outcome::Ours;
    return askOverBus(m_bus) ? Outcome::Another : Outcome::AnotherSilent;
}

SessionInstance::Outcome SessionInstance::claimLock()
{
    switch (m_lock.tryLock(lockFile())) {
    case RuntimeLock::Outcome::HeldByAnother:
        return askOverSocket() ? Outcome::Another : Outcome::AnotherSilent;
    case RuntimeLock::Outcome::Unavailable:
        qCWarning(lcInstance) << "The runtime folder takes no lock";
        return Outcome::Ours;
    case RuntimeLock::Outcome::Taken:
        break;
    }
    return Outcome::Ours;
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
    // Qt's window system plugins take the token from the environment when a window asks to be raised.
    if (const QByteArray token = platformData.value(QLatin1String(activationToken)).toString().toUtf8();
        !token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token);
    if (m_show)
        m_show();
}

} // namespace zemrak::linux_
