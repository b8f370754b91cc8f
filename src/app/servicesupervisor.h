#pragma once

#include "app/serviceexit.h"
#include "app/servicelog.h"
#include "app/servicerunner.h"
#include "base/clock.h"
#include "host/applicationbundle.h"
#include "host/childguard.h"

#include <QObject>
#include <QProcess>
#include <QStringDecoder>

#include <memory>

namespace zemrak {

/// Keeps the print service running: launches it, collects its output, launches it again when it ends.
///
/// There is never more than one service process: a launch waits until the process before it is gone, and one that
/// ignores the request to end is killed after three seconds. Main thread only; nothing but shutDown() and the
/// destructor blocks. Slots may call back into it.
class ServiceSupervisor : public QObject
{
    Q_OBJECT

public:
    /// `configDir` is the folder where the service keeps its certificate and its token.
    ServiceSupervisor(ApplicationBundle bundle, QString configDir, Clock &clock, ChildGuard &guard, ServiceLog &log,
        QObject *parent = nullptr);
    ~ServiceSupervisor() override;

    /// A launched service process exists.
    [[nodiscard]] bool isRunning() const { return m_running; }
    /// The service last ended because another program holds its port, and has not answered since.
    [[nodiscard]] bool portConflict() const { return m_portConflict; }
    /// To be called when the service answers: whatever held the port is gone.
    void clearPortConflict() { setPortConflict(false); }
    /// Process id of the service; 0 when none runs.
    [[nodiscard]] qint64 processId() const { return m_process ? m_process->processId() : 0; }

    /// Launches the service, after its certificate was made if there is none; replaces one that runs.
    void start();
    /// Asks the service to end and launches nothing until start().
    void stop();
    /// stop(), and start() one second later.
    void restart();
    /// stop(), and waits until the service is gone: three seconds, then it is killed, and the system gets three more
    /// to clear it away. For the end of the application.
    void shutDown();

Q_SIGNALS:
    /// At every start(), also of those after a crash.
    void startRequested();
    void stopRequested();
    void runningChanged();
    void portConflictChanged();
    /// Each time the service has ended because another program holds its port.
    void portTaken();

private:
    void prepare();
    void launch();
    void requestEnd();
    void readOutput();
    void onLaunched();
    void onLaunchFailed();
    void onEnded(const ServiceExit &exit);
    void letGoOfProcess();
    [[nodiscard]] bool hasProcess() const { return m_process != nullptr; }
    void setRunning(bool running);
    void setPortConflict(bool portConflict);

    ApplicationBundle m_bundle;
    QString m_configDir;
    ChildGuard &m_guard;
    ServiceLog &m_log;
    ServiceRunner m_runner;
    std::unique_ptr<QProcess> m_process;
    QStringDecoder m_decoder{QStringDecoder::Utf8};
    std::unique_ptr<Timer> m_startTimer; ///< the one launch to come: after a crash or within a restart
    std::unique_ptr<Timer> m_killTimer; ///< until a service that was asked to end is killed
    std::unique_ptr<Timer> m_prepareTimer; ///< until "init-tls" is given up
    bool m_stopping = false; ///< a deliberate end: no relaunch
    bool m_replacing = false; ///< launch as soon as the present process has ended
    bool m_preparing = false;
    bool m_prepareCancelled = false; ///< by stop(), not by its own failure
    bool m_running = false;
    bool m_portConflict = false;
};

} // namespace zemrak
