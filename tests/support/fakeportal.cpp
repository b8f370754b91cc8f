#include "support/fakeportal.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusVirtualObject>
#include <QSignalSpy>

namespace zemrak::test {

namespace {

QStringList patternsOf(const QVariant &filters)
{
    QStringList patterns;
    const auto list = filters.value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString name;
        list.beginStructure();
        list >> name;
        list.beginArray();
        while (!list.atEnd()) {
            uint kind = 0;
            QString pattern;
            list.beginStructure();
            list >> kind >> pattern;
            list.endStructure();
            patterns.append(pattern);
        }
        list.endArray();
        list.endStructure();
    }
    list.endArray();
    return patterns;
}

QString freshConnectionName()
{
    static int count = 0;
    return QStringLiteral("portal-%1").arg(++count);
}

} // namespace

/// Every request the portal has made, as one tree of objects.
class PortalRequestObject final : public QDBusVirtualObject
{
public:
    explicit PortalRequestObject(FakePortal *portal)
        : QDBusVirtualObject(portal)
        , m_portal(portal)
    {
    }
    [[nodiscard]] QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        if (message.member() == QLatin1String("Close"))
            m_portal->m_closed.append(message.path());
        return true;
    }

private:
    FakePortal *m_portal;
};

FakePortal::FakePortal(const QString &busAddress, Mood mood)
    : m_connectionName(freshConnectionName())
    , m_bus(QDBusConnection::connectToBus(busAddress, m_connectionName))
    , m_mood(mood)
{
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
    const bool up = m_bus.registerObject(path, this, QDBusConnection::ExportAllSlots)
        && m_bus.registerVirtualObject(
            path + QStringLiteral("/request"), new PortalRequestObject(this), QDBusConnection::SubPath)
        && m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    if (!up)
        qFatal("The fake portal cannot start");
}

FakePortal::~FakePortal()
{
    m_bus.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
    QDBusConnection::disconnectFromBus(m_connectionName);
}

QDBusObjectPath FakePortal::SaveFile(const QString &, const QString &title, const QVariantMap &options)
{
    const QString root = QStringLiteral("/org/freedesktop/portal/desktop/request/");
    const QString token = options.value(QStringLiteral("handle_token")).toString();
    const QString asker = message().service();
    const QString usual = root + asker.mid(1).replace(QLatin1Char('.'), QLatin1Char('_')) + QLatin1Char('/') + token;
    m_questions.append({title, options, patternsOf(options.value(QStringLiteral("filters"))),
        m_mood == Mood::Old ? root + QStringLiteral("own/1") : usual, asker});
    if (m_mood == Mood::Refusing)
        sendErrorReply(QDBusError::UnknownInterface, QStringLiteral("no such thing"));
    if (m_mood == Mood::Hanging)
        setDelayedReply(true);
    if (m_mood == Mood::Hasty)
        respond(1);
    return QDBusObjectPath(m_questions.last().request);
}

void FakePortal::settle(const QDBusConnection &client)
{
    const QDBusPendingCallWatcher ping(client.asyncCall(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"))));
    QSignalSpy answered(&ping, &QDBusPendingCallWatcher::finished);
    if (!answered.wait())
        qFatal("The fake portal does not answer");
}

void FakePortal::respond(uint response, const QStringList &uris)
{
    const Question &question = m_questions.last();
    QDBusMessage signal = QDBusMessage::createTargetedSignal(
        question.asker, question.request, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
    signal.setArguments({response, QVariantMap{{QStringLiteral("uris"), uris}}});
    m_bus.send(signal);
}

} // namespace zemrak::test
