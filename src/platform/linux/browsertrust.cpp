#include "platform/linux/browsertrust.h"

#include "platform/linux/certificatestores.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>

namespace zemrak::linux_ {

namespace {

Q_LOGGING_CATEGORY(lcTrust, "zemrak.platform")

// How soon a cancelled check ends.
constexpr std::chrono::milliseconds cancelInterval{50};

// Whether the tool ends with status 0 in time. It is gone when this returns.
bool succeeds(
    const QString &tool, const QStringList &arguments, QDeadlineTimer deadline, const std::atomic_bool &cancelled)
{
    const QString program = QStandardPaths::findExecutable(tool);
    if (program.isEmpty()) {
        qCWarning(lcTrust) << tool << "is not installed: trust in the certificate authority cannot be checked";
        return false;
    }
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    while (process.state() != QProcess::NotRunning && !cancelled && !deadline.hasExpired())
        process.waitForFinished(int(std::min<qint64>(cancelInterval.count(), deadline.remainingTime())));
    if (process.state() != QProcess::NotRunning) {
        if (!cancelled)
            qCWarning(lcTrust) << tool << "did not end in time";
        process.kill();
        process.waitForFinished(1000);
        return false;
    }
    return process.error() != QProcess::FailedToStart && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

} // namespace

BrowserTrust::BrowserTrust(QString home, std::chrono::milliseconds budget)
    : m_home(std::move(home))
    , m_budget(budget)
{
}

bool BrowserTrust::isTrusted(const QString &certificateFile, const std::atomic_bool &cancelled) const
{
    if (!QFileInfo(certificateFile).isFile())
        return false;
    const QDeadlineTimer deadline(m_budget);
    const QStringList stores = browserCertificateStores(m_home, QProcessEnvironment::systemEnvironment());
    if (stores.isEmpty())
        return succeeds(QStringLiteral("openssl"), {QStringLiteral("verify"), certificateFile}, deadline, cancelled);
    return std::all_of(stores.begin(), stores.end(), [&](const QString &store) {
        // The tools would make a database where there is none.
        if (!QFileInfo::exists(store + QStringLiteral("/cert9.db")))
            return false;
        // 3: as an authority for TLS servers.
        const bool accepted = succeeds(QStringLiteral("vfychain"),
            {QStringLiteral("-d"), QStringLiteral("sql:") + store, QStringLiteral("-u"), QStringLiteral("3"),
                QStringLiteral("-a"), certificateFile},
            deadline, cancelled);
        if (!accepted && !cancelled)
            qCInfo(lcTrust) << "The certificate authority is not trusted in" << store;
        return accepted;
    });
}

} // namespace zemrak::linux_
