#include "app/servicecommand.h"

#include <QDir>

namespace zemrak {

QString serviceConfigDir()
{
    return QDir::homePath() + QStringLiteral("/Library/Application Support/Zemrak Local Print");
}

void setServiceCommand(QProcess &process, const ApplicationBundle &bundle, const QStringList &arguments)
{
    process.setProgram(bundle.node());
    process.setArguments(QStringList(bundle.serviceScript()) + arguments);
    process.setStandardInputFile(QProcess::nullDevice());
}

QProcessEnvironment serviceEnvironment(const ApplicationBundle &bundle)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // A launcher's activation token is for this process alone.
    environment.remove(QStringLiteral("XDG_ACTIVATION_TOKEN"));
    environment.remove(QStringLiteral("DESKTOP_STARTUP_ID"));
    environment.insert(QStringLiteral("ZEMRAK_LP_EXIT_WITH_PARENT"), QStringLiteral("1"));
    // Notifications are the application's: two programs must not announce the same problem.
    environment.insert(QStringLiteral("ZEMRAK_LP_NO_OS_NOTIFY"), QStringLiteral("1"));
    environment.insert(QStringLiteral("ZEMRAK_LP_PDFRENDER"), bundle.pdfRenderer());
    environment.insert(QStringLiteral("ZEMRAK_LP_TEXTRENDER"), bundle.textRenderer());
    return environment;
}

} // namespace zemrak
