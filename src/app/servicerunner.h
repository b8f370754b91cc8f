#pragma once

#include "host/applicationbundle.h"
#include "host/childguard.h"
#include "host/servicecommands.h"

#include <QObject>
#include <QProcess>

namespace zemrak {

/// Runs the service's one-shot commands in this process's environment. What they write to standard output is dropped,
/// their status being the answer; their errors go to this process's.
class ServiceRunner : public QObject, public ServiceCommands
{
    Q_OBJECT

public:
    ServiceRunner(ApplicationBundle bundle, ChildGuard &guard, QObject *parent = nullptr);
    /// Ends what still runs; its `done` is not called. Waits for it, a second and then three after killing it.
    ~ServiceRunner() override;

    void runOnce(const QStringList &arguments, QObject *context, Ended done) override;
    /// Kills every command that runs; each `done` is called with -1 as usual.
    void cancelAll();

private:
    ApplicationBundle m_bundle;
    ChildGuard &m_guard;
};

} // namespace zemrak
