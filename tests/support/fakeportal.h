#pragma once

#include "support/privatebus.h"

#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace zemrak::test {

/// The file dialogs of a desktop portal on a test's own bus; the test plays the person.
class FakePortal : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.FileChooser")

public:
    enum class Mood
    {
        Serving,
        Hasty, ///< cancels before it answers the call
        Old, ///< names its requests itself
        Hanging,
        Refusing
    };

    struct Question
    {
        QString title;
        QVariantMap options;
        QStringList patterns; ///< of file names, of all filters
        QString request; ///< object path
        QString asker;
    };

    FakePortal(const QString &busAddress, Mood mood);
    ~FakePortal() override;

    [[nodiscard]] const QList<Question> &questions() const { return m_questions; }
    /// Object paths of the requests that were taken back.
    [[nodiscard]] const QStringList &closed() const { return m_closed; }
    void respond(uint response, const QStringList &uris = {});
    /// Waits until all that the portal has said has come through to `client`.
    static void settle(const QDBusConnection &client);

public Q_SLOTS:
    QDBusObjectPath SaveFile(const QString &parent, const QString &title, const QVariantMap &options);

private:
    BusClient m_client;
    Mood m_mood;
    QList<Question> m_questions;
    QStringList m_closed;

    friend class PortalRequestObject;
};

} // namespace zemrak::test
