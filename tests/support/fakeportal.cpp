#include "support/fakeportal.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusVirtualObject>
#include <QSignalSpy>

namespace zemrak::test {

namespace {

const QString portalName = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");

QStringList patternsOf(const QVariant &filters)
{
    QStringList patterns;
    const auto list = filters.value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString name;
        list.beginStructure();
        list >> name;
        forEachStructure<uint, QString>(list, [&](uint, const QString &pattern) { patterns.append(pattern); });
        list.endStructure();
    }
    list.endArray();
    return patterns;
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
    : m_client(busAddress)
    , m_mood(mood)
{
    m_client.bus.registerVirtualObject(
        portalPath + QStringLiteral("/request"), new PortalRequestObject(this), QDBusConnection::SubPath);
    m_client.provide(portalName, portalPath, this);
}

FakePortal::~FakePortal() = default;

QDBusObjectPath FakePortal::SaveFile(const QString &, const QString &title, const QVariantMap &options)
{
    const QString root = portalPath + QStringLiteral("/request/");
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
        portalName, portalPath, QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"))));
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
    m_client.bus.send(signal);
}

} // namespace zemrak::test
