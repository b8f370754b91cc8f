#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

QT_BEGIN_NAMESPACE
class QObject;
QT_END_NAMESPACE

namespace zemrak {

/// Requests to the print service's admin API. Main thread only; never blocks.
class PrintService
{
public:
    virtual ~PrintService() = default;

    /// The body of a complete answer, whatever its HTTP status; none when there was no complete answer in time.
    using Answer = std::optional<QByteArray>;
    /// Called at most once, in a later turn of the event loop, and not at all when the request's `context` is gone by
    /// then. May be empty.
    using Answered = std::function<void(const Answer &answer)>;

    /// From sending a request to the last byte of its answer, where nothing longer is needed.
    static constexpr std::chrono::milliseconds usualTimeout{5000};

    /// Fetches `path`, which begins with "/admin/". Has no side effect in the service, so it may be sent again when the
    /// connection breaks.
    virtual void get(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done) = 0;
    /// Sends `body` to `path`; without one the request has no body. Sent once at most.
    virtual void post(const QString &path, const std::optional<QJsonObject> &body, std::chrono::milliseconds timeout,
        QObject *context, Answered done)
        = 0;
};

} // namespace zemrak
