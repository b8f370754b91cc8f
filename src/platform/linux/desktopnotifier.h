#pragma once

#include "health/notifier.h"
#include "platform/linux/notificationledger.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>

namespace zemrak::linux_ {

/// Notifications through the session bus (org.freedesktop.Notifications). Every call is asynchronous: a server that is
/// missing, hangs, refuses or restarts costs at most the notification.
class DesktopNotifier final : public QObject, public Notifier
{
    Q_OBJECT

public:
    /// `ledgerFile`: where to remember, for the length of the login session, what is posted. `iconFile`: the picture
    /// beside the text; may be empty.
    DesktopNotifier(const QDBusConnection &bus, const QString &ledgerFile, const QString &iconFile);

    void install() override;
    void onClicked(Clicked clicked) override { m_clicked = std::move(clicked); }
    void status(StatusDone done) override;
    void requestPermission(PermissionDone done) override;
    void post(const QString &id, const QString &title, const QString &body, bool critical) override;
    void retract(const QStringList &ids) override;

private Q_SLOTS:
    void onActivationToken(uint serverId, const QString &token);
    void onActionInvoked(uint serverId, const QString &action);
    void onNotificationClosed(uint serverId, uint reason);

private:
    enum class Server
    {
        Unknown,
        Asking,
        Known
    };

    /// What posting needs to know of the server, asked for when it is first needed and after each of its restarts.
    /// `action` is dropped when no server answers.
    void whenServerKnown(std::function<void()> action);
    void askBusId();
    void askServer();
    void onServerKnown(const QDBusMessage &capabilities);
    void onServerMissing();
    void onServerChanged();

    void send(const QString &id, const QString &title, const QString &body, bool critical);
    void onSent(const QString &id, const QDBusPendingCallWatcher &call);
    void close(uint serverId);
    void call(const QDBusMessage &message, int timeoutMs, std::function<void(QDBusPendingCallWatcher &)> done);

    QDBusConnection m_bus;
    NotificationLedger m_ledger;
    QString m_iconFile;
    Clicked m_clicked;
    Server m_server = Server::Unknown;
    QString m_busId;
    QStringList m_capabilities;
    QList<std::function<void()>> m_waiting; ///< for the server to be known
    QHash<QString, bool> m_underWay; ///< sent and not yet numbered by the server; true: to be taken back then
    QString m_activationToken; ///< of the click that is to come
};

} // namespace zemrak::linux_
