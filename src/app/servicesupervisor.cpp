#include "app/servicesupervisor.h"

#include "app/servicecommand.h"

#include <QFile>
#include <QLoggingCategory>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcService, "zemrak.service")

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds restartPause = 1s;
constexpr std::chrono::milliseconds politeEnd = 3s;
constexpr std::chrono::milliseconds certificatePatience = 60s;

} // namespace

ServiceSupervisor::ServiceSupervisor(
    ApplicationBundle bundle, QString configDir, Clock &clock, ChildGuard &guard, ServiceLog &log, QObject *parent)
    : QObject(parent)
    , m_bundle(std::move(bundle))
    , m_configDir(std::move(configDir))
    , m_guard(guard)
    , m_log(log)
    , m_runner(m_bundle, guard)
    , m_startTimer(clock.makeTimer(Clock::Repeat::Once, [this] { start(); }))
    , m_killTimer(clock.makeTimer(Clock::Repeat::Once,
          [this] {
              if (m_process)
                  m_process->kill();
          }))
    , m_prepareTimer(clock.makeTimer(Clock::Repeat::Once, [this] { m_runner.cancelAll(); }))
{
}

ServiceSupervisor::~ServiceSupervisor()
{
    if (m_process) {
        m_process->disconnect(this);
        m_process->kill();
        m_process->waitForFinished(static_cast<int>(politeEnd.count()));
    }
}

void ServiceSupervisor::start()
{
    m_stopping = false;
    m_startTimer->stop();
    if (hasProcess()) {
        m_replacing = true;
        requestEnd();
    } else {
        prepare();
    }
    Q_EMIT startRequested();
}

void ServiceSupervisor::stop()
{
    m_stopping = true;
    m_replacing = false;
    m_startTimer->stop();
    m_prepareCancelled = m_preparing;
    m_runner.cancelAll();
    requestEnd();
    Q_EMIT stopRequested();
}

void ServiceSupervisor::restart()
{
    stop();
    m_startTimer->start(restartPause);
}

void ServiceSupervisor::shutDown()
{
    stop();
    // Slots that run while waiting may release the process object.
    if (m_process && !m_process->waitForFinished(static_cast<int>(politeEnd.count())) && m_process) {
        m_process->kill();
        m_process->waitForFinished(static_cast<int>(politeEnd.count()));
    }
}

void ServiceSupervisor::prepare()
{
    if (m_preparing || hasProcess())
        return;
    if (QFile::exists(m_configDir + QStringLiteral("/tls/server.crt"))) {
        launch();
        return;
    }
    m_preparing = true;
    m_prepareCancelled = false;
    m_prepareTimer->start(certificatePatience);
    m_runner.runOnce({QStringLiteral("init-tls")}, this, [this](int status) {
        m_preparing = false;
        m_prepareTimer->stop();
        if (m_stopping)
            return;
        // Stopped and started again meanwhile: the certificate still is to be made first.
        if (std::exchange(m_prepareCancelled, false)) {
            prepare();
            return;
        }
        if (status != 0)
            qCWarning(lcService) << "The certificate was not made; status" << status;
        launch();
    });
}

void ServiceSupervisor::launch()
{
    m_process = std::make_unique<QProcess>();
    setServiceCommand(*m_process, m_bundle, {QStringLiteral("run")});
    // A pipe, never written to: its end tells the service's guard of ours, also where the service hangs.
    m_process->setStandardInputFile(QString());
    m_process->setProcessEnvironment(serviceEnvironment(m_bundle));
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    m_guard.guard(*m_process);
    m_decoder.resetState();

    connect(m_process.get(), &QProcess::readyReadStandardOutput, this, &ServiceSupervisor::readOutput);
    connect(m_process.get(), &QProcess::started, this, &ServiceSupervisor::onLaunched);
    connect(m_process.get(), &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            onLaunchFailed();
    });
    connect(m_process.get(), &QProcess::finished, this, [this](int status, QProcess::ExitStatus how) {
        onEnded({.bySignal = how == QProcess::CrashExit, .status = status});
    });
    m_process->start(QIODevice::ReadOnly);
}

void ServiceSupervisor::requestEnd()
{
    if (!hasProcess() || m_killTimer->isActive())
        return;
    m_process->terminate();
    m_killTimer->start(politeEnd);
}

void ServiceSupervisor::readOutput()
{
    m_log.append(m_decoder.decode(m_process->readAllStandardOutput()));
}

void ServiceSupervisor::onLaunched()
{
    qCInfo(lcService) << "Launched the print service, process" << m_process->processId();
    setRunning(true);
}

void ServiceSupervisor::onLaunchFailed()
{
    m_log.replace(QStringLiteral("تعذر تشغيل الخدمة: ") + m_process->errorString());
    qCWarning(lcService) << "The print service could not be launched:" << m_process->errorString();
    letGoOfProcess();
    if (std::exchange(m_replacing, false) && !m_stopping)
        prepare();
}

void ServiceSupervisor::onEnded(const ServiceExit &exit)
{
    qCInfo(lcService) << "The print service ended;" << (exit.bySignal ? "signal" : "status") << exit.status;
    letGoOfProcess();
    // All state is set before any signal: slots may call back.
    const bool replaced = std::exchange(m_replacing, false);
    if (!replaced && !m_stopping)
        m_startTimer->start(relaunchDelay(exit));
    setRunning(false);
    if (!replaced) {
        setPortConflict(isPortConflict(exit));
        if (isPortConflict(exit))
            Q_EMIT portTaken();
    }
    if (replaced && !m_stopping)
        prepare(); // the old process was told to end: its exit status says nothing about the port
}

void ServiceSupervisor::letGoOfProcess()
{
    m_killTimer->stop();
    m_process->disconnect(this);
    m_process.release()->deleteLater(); // it is emitting the signal that led here
}

void ServiceSupervisor::setRunning(bool running)
{
    if (std::exchange(m_running, running) != running)
        Q_EMIT runningChanged();
}

void ServiceSupervisor::setPortConflict(bool portConflict)
{
    if (std::exchange(m_portConflict, portConflict) != portConflict)
        Q_EMIT portConflictChanged();
}

} // namespace zemrak
