#include "app/servicerunner.h"

#include "app/servicecommand.h"

#include <QPointer>

namespace zemrak {

ServiceRunner::ServiceRunner(ApplicationBundle bundle, ChildGuard &guard, QObject *parent)
    : QObject(parent)
    , m_bundle(std::move(bundle))
    , m_guard(guard)
{
}

ServiceRunner::~ServiceRunner()
{
    for (QProcess *command : findChildren<QProcess *>()) {
        command->disconnect(this);
        command->terminate(); // "trust-status" then ends the tools it has started
        if (!command->waitForFinished(1000)) {
            command->kill();
            command->waitForFinished(3000);
        }
    }
}

void ServiceRunner::runOnce(const QStringList &arguments, QObject *context, Ended done)
{
    auto *command = new QProcess(this);
    setServiceCommand(*command, m_bundle, arguments);
    command->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    command->setStandardOutputFile(QProcess::nullDevice());
    m_guard.guard(*command);

    const auto finish = [command, context = QPointer(context), done = std::move(done)](int status) {
        command->deleteLater();
        if (context)
            done(status);
    };
    connect(command, &QProcess::finished, this,
        [finish](int code, QProcess::ExitStatus how) { finish(how == QProcess::NormalExit ? code : -1); });
    // Queued, since a launch may fail from within start().
    connect(
        command, &QProcess::errorOccurred, this,
        [finish](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                finish(-1);
        },
        Qt::QueuedConnection);
    command->start();
}

void ServiceRunner::cancelAll()
{
    for (QProcess *command : findChildren<QProcess *>())
        command->kill();
}

} // namespace zemrak
