#include "platform/linux/businhibition.h"

#include "platform/linux/buscall.h"

#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QLoggingCategory>

#include <optional>
#include <utility>

namespace zemrak::linux_ {

namespace {

Q_LOGGING_CATEGORY(lcSleep, "zemrak.platform.sleep")

} // namespace

/// What was asked for and what came of it. Outlives the inhibition while an answer is under way.
struct BusInhibition::Hold
{
    QDBusConnection bus;
    InhibitService service;
    QDBusUnixFileDescriptor descriptor = {}; ///< closing it releases the inhibition
    std::optional<quint32> cookie = {};
    bool given = false; ///< released by this side

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
    callAsync(m_bus, busDaemonCall(QStringLiteral("NameHasOwner"), {m_service.name}), this,
        [this](const QDBusMessage &reply) {
            if (m_hold)
                return;
            if (reply.arguments().value(0).toBool())
                take();
            else if (m_service.expected)
                qCWarning(lcSleep) << "Sleep is not held off until this service appears:" << m_service.name;
        });
}

void BusInhibition::take()
{
    m_hold = std::make_shared<Hold>(Hold{m_bus, m_service});
    QDBusMessage message
        = QDBusMessage::createMethodCall(m_service.name, m_service.path, m_service.interface, m_service.inhibit);
    message.setAutoStartService(false);
    message.setArguments(m_service.arguments);
    // Without a context: an inhibition that is granted after this object is gone has to be given back.
    callAsync(m_bus, message, nullptr, [hold = m_hold](const QDBusMessage &reply) { hold->accept(reply); });
}

} // namespace zemrak::linux_
