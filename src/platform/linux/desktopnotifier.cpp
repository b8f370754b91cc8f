#include "platform/linux/desktopnotifier.h"

#include <QDBusError>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QLoggingCategory>
#include <QVariantMap>

namespace zemrak::linux_ {

namespace {

Q_LOGGING_CATEGORY(lcNotifier, "zemrak.platform")

// A server that hangs for a minute still gets what was posted meanwhile; nobody waits for it.
constexpr int postPatienceMs = 120'000;
constexpr int statusPatienceMs = 5'000;

QString serverName()
{
    return QStringLiteral("org.freedesktop.Notifications");
}

QString serverPath()
{
    return QStringLiteral("/org/freedesktop/Notifications");
}

QDBusMessage serverCall(const QString &method, const QVariantList &arguments = {})
{
    QDBusMessage message = QDBusMessage::createMethodCall(serverName(), serverPath(), serverName(), method);
    message.setArguments(arguments);
    return message;
}

QString escaped(QString text)
{
    text.replace(QLatin1Char('&'), QLatin1String("&amp;"));
    text.replace(QLatin1Char('<'), QLatin1String("&lt;"));
    text.replace(QLatin1Char('>'), QLatin1String("&gt;"));
    return text;
}

QVariantMap hints(bool critical)
{
    constexpr uchar normalUrgency = 1;
    constexpr uchar criticalUrgency = 2;
    return {
        {QStringLiteral("urgency"), QVariant::fromValue(critical ? criticalUrgency : normalUrgency)},
        {QStringLiteral("sound-name"),
            critical ? QStringLiteral("dialog-error") : QStringLiteral("message-new-instant")},
        {QStringLiteral("desktop-entry"), QStringLiteral("com.zemrak.Printer")},
        {QStringLiteral("x-zemrak-thread"), QStringLiteral("zemrak-printer-alerts")},
    };
}

} // namespace

DesktopNotifier::DesktopNotifier(const QDBusConnection &bus, const QString &ledgerFile, const QString &iconFile)
    : m_bus(bus)
    , m_ledger(ledgerFile)
    , m_iconFile(iconFile)
{
}

void DesktopNotifier::install()
{
    const auto listen = [this](const char *signal, const char *slot) {
        m_bus.connect(serverName(), serverPath(), serverName(), QLatin1String(signal), this, slot);
    };
    listen("ActivationToken", SLOT(onActivationToken(uint, QString)));
    listen("ActionInvoked", SLOT(onActionInvoked(uint, QString)));
    listen("NotificationClosed", SLOT(onNotificationClosed(uint, uint)));
    auto *watcher = new QDBusServiceWatcher(serverName(), m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &DesktopNotifier::onServerChanged);
}

void DesktopNotifier::call(
    const QDBusMessage &message, int timeoutMs, std::function<void(QDBusPendingCallWatcher &)> done)
{
    // Without a bus a call never finishes by itself.
    const QDBusPendingCall pending = m_bus.isConnected()
        ? m_bus.asyncCall(message, timeoutMs)
        : QDBusPendingCall::fromError(QDBusError(QDBusError::Disconnected, QStringLiteral("no session bus")));
    auto *watcher = new QDBusPendingCallWatcher(pending, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [done = std::move(done)](QDBusPendingCallWatcher *self) {
        self->deleteLater();
        done(*self);
    });
}

void DesktopNotifier::status(StatusDone done)
{
    requestPermission([done = std::move(done)](bool granted, const QString &) {
        done(granted ? NotificationStatus::Authorized : NotificationStatus::Denied);
    });
}

// Nobody asks the person here: a desktop that has a notification server lets programs use it.
void DesktopNotifier::requestPermission(PermissionDone done)
{
    call(serverCall(QStringLiteral("GetServerInformation")), statusPatienceMs,
        [done = std::move(done)](QDBusPendingCallWatcher &reply) {
            done(!reply.isError(), reply.isError() ? reply.error().message() : QString());
        });
}

void DesktopNotifier::post(const QString &id, const QString &title, const QString &body, bool critical)
{
    whenServerKnown([this, id, title, body, critical] { send(id, title, body, critical); });
}

void DesktopNotifier::retract(const QStringList &ids)
{
    whenServerKnown([this, ids] {
        for (const QString &id : ids) {
            if (const auto sent = m_underWay.find(id); sent != m_underWay.end())
                *sent = true;
            else if (const std::optional<uint> serverId = m_ledger.take(id))
                close(*serverId);
        }
    });
}

void DesktopNotifier::whenServerKnown(std::function<void()> action)
{
    if (m_server == Server::Known) {
        action();
        return;
    }
    m_waiting.append(std::move(action));
    if (std::exchange(m_server, Server::Asking) == Server::Unknown)
        askBusId();
}

// Numbers and unique names begin anew with every bus, so the bus is part of what a server is known by.
void DesktopNotifier::askBusId()
{
    if (!m_busId.isEmpty()) {
        askServer();
        return;
    }
    const QDBusMessage message = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
    call(message, postPatienceMs, [this](QDBusPendingCallWatcher &watcher) {
        const QDBusPendingReply<QString> reply = watcher;
        if (reply.isError()) {
            onServerMissing();
            return;
        }
        m_busId = reply.value();
        askServer();
    });
}

void DesktopNotifier::askServer()
{
    call(serverCall(QStringLiteral("GetCapabilities")), postPatienceMs, [this](QDBusPendingCallWatcher &watcher) {
        if (watcher.isError())
            onServerMissing();
        else
            onServerKnown(watcher.reply());
    });
}

void DesktopNotifier::onServerKnown(const QDBusMessage &capabilities)
{
    m_server = Server::Known;
    m_capabilities = capabilities.arguments().value(0).toStringList();
    m_ledger.setServer(m_busId + capabilities.service());
    const QList<std::function<void()>> waiting = std::exchange(m_waiting, {});
    for (const std::function<void()> &action : waiting)
        action();
}

void DesktopNotifier::onServerMissing()
{
    qCInfo(lcNotifier) << "No notification server answers;" << m_waiting.size() << "requests dropped";
    m_server = Server::Unknown;
    m_waiting.clear();
}

void DesktopNotifier::onServerChanged()
{
    if (m_server == Server::Known)
        m_server = Server::Unknown;
}

void DesktopNotifier::send(const QString &id, const QString &title, const QString &body, bool critical)
{
    const bool clickable = m_capabilities.contains(QLatin1String("actions"));
    const bool interpreted = m_capabilities.contains(QLatin1String("body-markup"));
    const QStringList actions
        = clickable ? QStringList{QStringLiteral("default"), QStringLiteral("فتح")} : QStringList();
    constexpr uint replacesNothing = 0;
    constexpr int serversOwnTime = -1;
    m_underWay.insert(id, false);
    call(serverCall(QStringLiteral("Notify"),
             {QStringLiteral("Zemrak Printer"), replacesNothing, m_iconFile, title, interpreted ? escaped(body) : body,
                 actions, hints(critical), serversOwnTime}),
        postPatienceMs, [this, id](QDBusPendingCallWatcher &watcher) { onSent(id, watcher); });
}

void DesktopNotifier::onSent(const QString &id, const QDBusPendingCallWatcher &call)
{
    const bool takeBack = m_underWay.take(id);
    const QDBusPendingReply<uint> reply = call;
    if (reply.isError()) {
        qCInfo(lcNotifier) << "A notification was not shown:" << reply.error().message();
        return;
    }
    m_ledger.setServer(m_busId + reply.reply().service());
    if (takeBack)
        close(reply.value());
    else
        m_ledger.add(id, reply.value());
}

void DesktopNotifier::close(uint serverId)
{
    m_bus.asyncCall(serverCall(QStringLiteral("CloseNotification"), {serverId}), postPatienceMs);
}

void DesktopNotifier::onActivationToken(uint serverId, const QString &token)
{
    if (m_ledger.knows(serverId))
        m_activationToken = token;
}

void DesktopNotifier::onActionInvoked(uint serverId, const QString &action)
{
    if (!m_ledger.knows(serverId))
        return;
    const QString token = std::exchange(m_activationToken, {});
    if (action == QLatin1String("default") && m_clicked)
        m_clicked(token);
}

void DesktopNotifier::onNotificationClosed(uint serverId, uint)
{
    m_ledger.forget(serverId);
}

} // namespace zemrak::linux_
