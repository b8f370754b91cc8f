#include "host/detachedshell.h"

#include <QProcess>

namespace zemrak {

bool startDetachedShell(const QString &line, const QString &shell)
{
    QProcess process;
    process.setProgram(shell);
    process.setArguments({QStringLiteral("-c"), line});
    process.setWorkingDirectory(QStringLiteral("/"));
    process.setStandardInputFile(QProcess::nullDevice());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // A launcher's activation token was for this process, not for what the line starts later.
    environment.remove(QStringLiteral("XDG_ACTIVATION_TOKEN"));
    environment.remove(QStringLiteral("DESKTOP_STARTUP_ID"));
    process.setProcessEnvironment(environment);
    return process.startDetached();
}

} // namespace zemrak
