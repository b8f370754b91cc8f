#pragma once

#include "health/notifier.h"
#include "platform/linux/notificationledger.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>

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
    void onActivationToken(const QDBusMessage &signal);
    void onActionInvoked(const QDBusMessage &signal);
    void onNotificationClosed(const QDBusMessage &signal);

private:
    struct Note
    {
        QString id;
        QString title;
        QString body;
        bool critical = false;
    };

    void onBusKnown(const QString &busId);
    /// What it can do; needed before anything is posted, and again after each of its restarts.
    void askServer();
    void onServerKnown(const QDBusMessage &capabilities);
    void onServerMissing();
    void onOwnerChanged(const QString &owner);

    void send(const Note &note);
    void onSent(const QString &id, const QDBusMessage &reply);
    void takeBack(const QString &id);
    void close(const QString &server, uint number);
    [[nodiscard]] bool isOurs(const QDBusMessage &signal) const;

    QDBusConnection m_bus;
    NotificationLedger m_ledger;
    QString m_iconFile;
    Clicked m_clicked;
    bool m_busKnown = false; ///< before that the ledger may be about another bus
    bool m_serverKnown = false;
    QPointer<QDBusPendingCallWatcher> m_question; ///< what can the server do
    QStringList m_capabilities;
    QList<Note> m_waiting; ///< for the server to be known
    QStringList m_ended; ///< to be taken back once the bus is known
    QHash<QString, bool> m_underWay; ///< sent and not yet numbered by the server; true: to be taken back then
    QString m_activationToken; ///< of the click that is to come
};

} // namespace zemrak::linux_
