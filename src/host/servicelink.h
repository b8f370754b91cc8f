#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <optional>

QT_BEGIN_NAMESPACE
class QObject;
QT_END_NAMESPACE

namespace zemrak {

/// What the operations of this room ask of the rest of the application: the print service, the short message over the
/// window, the log. Main thread only. A `done` is called at most once, in a later turn of the event loop, and not at
/// all when its `context` is gone by then.
class ServiceLink
{
public:
    virtual ~ServiceLink() = default;

    /// The body of a complete answer, whatever its HTTP status; none when there was no answer in time.
    using Answer = std::optional<QByteArray>;
    using Answered = std::function<void(const Answer &answer)>;
    /// Exit status; -1 when the command could not be launched or was killed.
    using Ended = std::function<void(int status)>;

    /// Fetches `path` of the admin API.
    virtual void get(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done) = 0;
    /// Sends an empty JSON object to `path` of the admin API, once at most.
    virtual void post(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done) = 0;
    /// Runs the service's script once with `arguments`, beside the service that runs.
    virtual void runOnce(const QStringList &arguments, QObject *context, Ended done) = 0;

    /// Shows a message for a moment.
    virtual void flash(const QString &text) = 0;
    /// Appends to the log that the person and support can read; `text` brings its own line end.
    virtual void appendToLog(const QString &text) = 0;
    /// Has the state of the service read now, besides the usual rhythm.
    virtual void refresh() = 0;
};

} // namespace zemrak
