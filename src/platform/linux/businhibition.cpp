#include "platform/linux/businhibition.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QLoggingCategory>
#include <QPointer>

#include <optional>
#include <utility>

namespace zemrak::linux_ {

namespace {

Q_LOGGING_CATEGORY(lcSleep, "zemrak.platform.sleep")

// Runs `then` with the answer, whoever is still there to hear it: an inhibition that arrives late is to be given back.
template <typename Then> void call(const QDBusConnection &bus, const QDBusMessage &message, Then then)
{
    // Without a bus a call never finishes by itself.
    auto *watcher = new QDBusPendingCallWatcher(bus.isConnected()
            ? bus.asyncCall(message)
            : QDBusPendingCall::fromError(QDBusError(QDBusError::Disconnected, QStringLiteral("no bus"))));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, then = std::move(then)] {
        then(watcher->reply());
        watcher->deleteLater();
    });
}

} // namespace

/// What was asked for and what came of it. Outlives the inhibition while an answer is under way.
struct BusInhibition::Hold
{
    QDBusConnection bus;
    InhibitService service;
    QDBusUnixFileDescriptor descriptor = {}; ///< held open: closing it is giving back
    std::optional<quint32> cookie = {};
    bool given = false; ///< wanted no more

    void accept(const QDBusMessage &reply)
    {
        if (reply.type() == QDBusMessage::ErrorMessage || reply.arguments().isEmpty()) {
            qCWarning(lcSleep) << "Sleep is not held off by" << service.name << reply.errorMessage();
            return;
        }
        const QVariant answer = reply.arguments().constFirst();
        if (!service.release.isEmpty())
            cookie = answer.toUInt();
        else if (!given)
            descriptor = answer.value<QDBusUnixFileDescriptor>();
        if (given)
            giveBack();
    }

    void giveBack()
    {
        given = true;
        descriptor = {};
        if (!cookie)
            return;
        QDBusMessage message
            = QDBusMessage::createMethodCall(service.name, service.path, service.interface, service.release);
        message.setAutoStartService(false);
        message << *std::exchange(cookie, std::nullopt);
        bus.send(message);
    }
};

BusInhibition::BusInhibition(const QDBusConnection &bus, InhibitService service)
    : m_bus(bus)
    , m_service(std::move(service))
    , m_watcher(m_service.name, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &, const QString &owner) {
            m_hold.reset(); // what the old owner held is gone with it
            if (!owner.isEmpty())
                take();
        });
    askForOwner();
}

BusInhibition::~BusInhibition()
{
    if (m_hold)
        m_hold->giveBack();
}

void BusInhibition::askForOwner()
{
    QDBusMessage message = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("NameHasOwner"));
    message << m_service.name;
    call(m_bus, message, [self = QPointer(this)](const QDBusMessage &reply) {
        if (!self || self->m_hold)
            return;
        if (reply.arguments().value(0).toBool())
            self->take();
        else if (self->m_service.expected)
            qCWarning(lcSleep) << "Sleep is not held off until this service appears:" << self->m_service.name;
    });
}

void BusInhibition::take()
{
    m_hold = std::make_shared<Hold>(Hold{m_bus, m_service});
    QDBusMessage message
        = QDBusMessage::createMethodCall(m_service.name, m_service.path, m_service.interface, m_service.inhibit);
    message.setAutoStartService(false);
    message.setArguments(m_service.arguments);
    call(m_bus, message, [hold = m_hold](const QDBusMessage &reply) { hold->accept(reply); });
}

} // namespace zemrak::linux_
