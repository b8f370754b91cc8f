#include "platform/linux/buscall.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>

namespace zemrak::linux_ {

QDBusPendingCallWatcher *callAsync(const QDBusConnection &bus, const QDBusMessage &message, QObject *context,
    std::function<void(const QDBusMessage &reply)> done, int timeLimitMs)
{
    // Qt never finishes a call on a connection that is not there.
    const QDBusPendingCall call = bus.isConnected()
        ? bus.asyncCall(message, timeLimitMs)
        : QDBusPendingCall::fromError(QDBusError(QDBusError::Disconnected, QStringLiteral("no bus")));
    auto *watcher = new QDBusPendingCallWatcher(call, context);
    QObject::connect(
        watcher, &QDBusPendingCallWatcher::finished, watcher, [done = std::move(done)](QDBusPendingCallWatcher *self) {
            self->deleteLater();
            done(self->reply());
        });
    return watcher;
}

QDBusMessage busDaemonCall(const QString &method, const QVariantList &arguments)
{
    const QString name = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage message = QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/DBus"), name, method);
    message.setArguments(arguments);
    return message;
}

} // namespace zemrak::linux_
