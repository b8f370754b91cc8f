#pragma once

#include "support/privatebus.h"

#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace zemrak::test {

/// A notification server on a test's own bus: remembers what is posted and plays the person who clicks.
class NotificationServer : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Note
    {
        uint number = 0;
        QString title;
        QString body;
        QStringList actions;
        QVariantMap hints;
        bool closed = false;
    };

    enum class Mood
    {
        Serving,
        Hanging,
        Refusing
    };

    explicit NotificationServer(const QString &busAddress);
    ~NotificationServer() override;

    void setMood(Mood mood) { m_mood = mood; }
    void setCapabilities(const QStringList &capabilities) { m_capabilities = capabilities; }
    /// Another one takes its name; it answers no more, and is still there.
    void loseName();
    /// Answers what it left hanging.
    void wakeUp();
    [[nodiscard]] const QList<Note> &notes() const { return m_notes; }
    [[nodiscard]] const Note *find(const QString &title) const;
    [[nodiscard]] int calls() const { return m_calls; }
    void click(uint number, const QString &token = {});
    /// Announces the end of its popup; `reason`: 1 it timed out, 2 the person closed it.
    void endPopup(uint number, uint reason) { Q_EMIT NotificationClosed(number, reason); }

public Q_SLOTS:
    QStringList GetCapabilities();
    QString GetServerInformation(QString &vendor, QString &version, QString &specVersion);
    uint Notify(const QString &application, uint replaces, const QString &icon, const QString &title,
        const QString &body, const QStringList &actions, const QVariantMap &hints, int expireMs);
    void CloseNotification(uint number);

Q_SIGNALS:
    void ActivationToken(uint number, const QString &token);
    void ActionInvoked(uint number, const QString &action);
    void NotificationClosed(uint number, uint reason);

private:
    /// True when the call gets its answer later, or a refusal.
    bool evades();
    uint show(const QVariantList &call);

    BusClient m_client;
    Mood m_mood = Mood::Serving;
    QStringList m_capabilities{QStringLiteral("actions"), QStringLiteral("body"), QStringLiteral("body-markup")};
    QList<Note> m_notes;
    QList<QDBusMessage> m_hanging;
    uint m_lastNumber = 0;
    int m_calls = 0;
};

} // namespace zemrak::test
