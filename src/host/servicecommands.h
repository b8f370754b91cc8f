#pragma once

#include <QStringList>

#include <functional>

QT_BEGIN_NAMESPACE
class QObject;
QT_END_NAMESPACE

namespace zemrak {

/// The service's script run for one command, such as "trust-ca", beside the service that runs. Main thread only; never
/// blocks.
class ServiceCommands
{
public:
    virtual ~ServiceCommands() = default;

    /// Exit status of the command; -1 when it could not be launched, was ended by a signal, or was cancelled.
    using Ended = std::function<void(int status)>;

    /// Runs the script with `arguments`. `done` is called at most once, in a later turn of the event loop, and not at
    /// all when `context` is gone by then.
    virtual void runOnce(const QStringList &arguments, QObject *context, Ended done) = 0;
};

} // namespace zemrak
