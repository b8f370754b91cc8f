#pragma once

#include "host/applicationbundle.h"
#include "host/childguard.h"

#include <QObject>
#include <QProcess>

#include <functional>

namespace zemrak {

/// Runs the service's one-shot commands, such as "init-tls". Belongs to the main thread and never blocks it.
class ServiceRunner : public QObject
{
    Q_OBJECT

public:
    ServiceRunner(ApplicationBundle bundle, ChildGuard &guard, QObject *parent = nullptr);
    /// Kills what still runs; its `done` is not called.
    ~ServiceRunner() override;

    /// Exit status of the command; -1 when it could not be launched, ended by a signal, or was cancelled.
    using Done = std::function<void(int status)>;

    /// Runs the service with `arguments`, in this process's environment and with its output streams. `done` is called
    /// once, in a later turn of the event loop.
    void runOnce(const QStringList &arguments, Done done);
    /// Kills every command that runs; each `done` is called with -1 as usual.
    void cancelAll();

private:
    ApplicationBundle m_bundle;
    ChildGuard &m_guard;
};

} // namespace zemrak
