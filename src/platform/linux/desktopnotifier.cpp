#include "platform/linux/desktopnotifier.h"

#include "platform/linux/buscall.h"

#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QLoggingCategory>
#include <QVariantMap>

namespace zemrak::linux_ {

namespace {

Q_LOGGING_CATEGORY(lcNotifier, "zemrak.platform")

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
    // From any sender: naming one would make Qt look it up and wait. Whose signal it is shows in the ledger.
    const auto listen = [this](const char *signal, const char *slot) {
        m_bus.connect(QString(), serverPath(), serverName(), QLatin1String(signal), this, slot);
    };
    listen("ActivationToken", SLOT(onActivationToken(QDBusMessage)));
    listen("ActionInvoked", SLOT(onActionInvoked(QDBusMessage)));
    listen("NotificationClosed", SLOT(onNotificationClosed(QDBusMessage)));
    auto *watcher = new QDBusServiceWatcher(serverName(), m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &, const QString &newOwner) { onOwnerChanged(newOwner); });

    callAsync(
        m_bus, busDaemonCall(QStringLiteral("GetId")), this,
        [this](const QDBusMessage &reply) { onBusKnown(QDBusReply<QString>(reply).value()); }, noTimeLimitMs);
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
    callAsync(
        m_bus, serverCall(QStringLiteral("GetServerInformation")), this,
        [done = std::move(done)](
            const QDBusMessage &reply) { done(reply.type() == QDBusMessage::ReplyMessage, reply.errorMessage()); },
        statusPatienceMs);
}

void DesktopNotifier::onBusKnown(const QString &busId)
{
    m_ledger.setBus(busId);
    m_busKnown = true;
    retract(std::exchange(m_ended, {}));
    if (!m_waiting.isEmpty())
        askServer();
}

void DesktopNotifier::post(const QString &id, const QString &title, const QString &body, bool critical)
{
    const Note note{id, title, body, critical};
    if (m_serverKnown) {
        send(note);
        return;
    }
    m_waiting.append(note);
    if (m_busKnown && !m_question)
        askServer();
}

void DesktopNotifier::retract(const QStringList &ids)
{
    if (!m_busKnown) {
        m_ended.append(ids);
        return;
    }
    for (const QString &id : ids)
        takeBack(id);
}

void DesktopNotifier::takeBack(const QString &id)
{
    // What has not gone out is not shown for a problem that is over.
    if (m_waiting.removeIf([&id](const Note &note) { return note.id == id; }) > 0)
        return;
    if (const auto sent = m_underWay.find(id); sent != m_underWay.end())
        *sent = true;
    else if (const std::optional<uint> number = m_ledger.take(id))
        close(m_ledger.server(), *number);
}

void DesktopNotifier::askServer()
{
    m_question = callAsync(
        m_bus, serverCall(QStringLiteral("GetCapabilities")), this,
        [this](const QDBusMessage &reply) {
            m_question.clear();
            if (reply.type() == QDBusMessage::ReplyMessage)
                onServerKnown(reply);
            else
                onServerMissing();
        },
        noTimeLimitMs);
}

void DesktopNotifier::onServerKnown(const QDBusMessage &capabilities)
{
    m_serverKnown = true;
    m_capabilities = capabilities.arguments().value(0).toStringList();
    const QList<Note> waiting = std::exchange(m_waiting, {});
    for (const Note &note : waiting)
        send(note);
}

void DesktopNotifier::onServerMissing()
{
    qCInfo(lcNotifier) << "No notification server answers;" << m_waiting.size() << "notifications dropped";
    m_waiting.clear();
}

// What waits for a server that goes, or hangs and is replaced, goes to the one that comes next.
void DesktopNotifier::onOwnerChanged(const QString &owner)
{
    m_serverKnown = false;
    delete m_question;
    if (m_busKnown && !owner.isEmpty() && !m_waiting.isEmpty())
        askServer();
}

void DesktopNotifier::send(const Note &note)
{
    const bool clickable = m_capabilities.contains(QLatin1String("actions"));
    const bool interpreted = m_capabilities.contains(QLatin1String("body-markup"));
    const QStringList actions
        = clickable ? QStringList{QStringLiteral("default"), QStringLiteral("فتح")} : QStringList();
    constexpr uint replacesNothing = 0;
    constexpr int serversOwnTime = -1;
    m_underWay.insert(note.id, false);
    // However long a server hangs, its late answer carries the number by which the notification can be taken back. The
    // bus ends the call when the server goes.
    callAsync(
        m_bus,
        serverCall(QStringLiteral("Notify"),
            {QStringLiteral("Zemrak Printer"), replacesNothing, m_iconFile, note.title,
                interpreted ? escaped(note.body) : note.body, actions, hints(note.critical), serversOwnTime}),
        this, [this, id = note.id](const QDBusMessage &reply) { onSent(id, reply); }, noTimeLimitMs);
}

void DesktopNotifier::onSent(const QString &id, const QDBusMessage &reply)
{
    const bool ended = m_underWay.take(id);
    const QDBusReply<uint> number(reply);
    if (!number.isValid())
        qCInfo(lcNotifier) << "A notification was not shown:" << number.error().message();
    else if (ended)
        close(reply.service(), number.value());
    else
        m_ledger.add(id, reply.service(), number.value());
}

// To the very server that gave the number: to another one it is somebody else's notification.
void DesktopNotifier::close(const QString &server, uint number)
{
    QDBusMessage message
        = QDBusMessage::createMethodCall(server, serverPath(), serverName(), QStringLiteral("CloseNotification"));
    message.setArguments({number});
    m_bus.send(message);
}

bool DesktopNotifier::isOurs(const QDBusMessage &signal) const
{
    return m_busKnown && m_ledger.knows(signal.service(), signal.arguments().value(0).toUInt());
}

void DesktopNotifier::onActivationToken(const QDBusMessage &signal)
{
    if (isOurs(signal))
        m_activationToken = signal.arguments().value(1).toString();
}

void DesktopNotifier::onActionInvoked(const QDBusMessage &signal)
{
    if (!isOurs(signal))
        return;
    const QString token = std::exchange(m_activationToken, {});
    if (signal.arguments().value(1).toString() == QLatin1String("default") && m_clicked)
        m_clicked(token);
}

void DesktopNotifier::onNotificationClosed(const QDBusMessage &signal)
{
    // What has only timed out may still stand in the server's list, to be taken back from there, or clicked.
    constexpr uint expired = 1;
    if (m_busKnown && signal.arguments().value(1).toUInt() != expired)
        m_ledger.forget(signal.service(), signal.arguments().value(0).toUInt());
}

} // namespace zemrak::linux_
