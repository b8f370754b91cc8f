#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantList>

#include <functional>
#include <limits>

QT_BEGIN_NAMESPACE
class QDBusPendingCallWatcher;
class QObject;
QT_END_NAMESPACE

namespace zemrak::linux_ {

inline constexpr int libraryTimeLimitMs = -1; ///< 25 s
inline constexpr int noTimeLimitMs = std::numeric_limits<int>::max();

/// Sends `message` without waiting. `done` is called once, in a later turn of the event loop, with the reply or with an
/// error message; at once with an error where there is no bus. It is not called when `context` is gone by then, or when
/// the returned watcher was deleted; null as `context`: it is called whoever is gone. The watcher deletes itself.
QDBusPendingCallWatcher *callAsync(const QDBusConnection &bus, const QDBusMessage &message, QObject *context,
    std::function<void(const QDBusMessage &reply)> done, int timeLimitMs = libraryTimeLimitMs);

/// A call to the message bus itself (org.freedesktop.DBus).
[[nodiscard]] QDBusMessage busDaemonCall(const QString &method, const QVariantList &arguments = {});

} // namespace zemrak::linux_
