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

/// Sends `message` without waiting. `done` is called once, in a later turn of the event loop, with the reply or an
/// error message, which it is also where there is no bus. Not called when `context` is destroyed by then, or when the
/// returned watcher was deleted; with a null `context` it is always called. The watcher deletes itself afterwards.
QDBusPendingCallWatcher *callAsync(const QDBusConnection &bus, const QDBusMessage &message, QObject *context,
    std::function<void(const QDBusMessage &reply)> done, int timeLimitMs = libraryTimeLimitMs);

/// A call to the message bus itself (org.freedesktop.DBus).
[[nodiscard]] QDBusMessage busDaemonCall(const QString &method, const QVariantList &arguments = {});

} // namespace zemrak::linux_
