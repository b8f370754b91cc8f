#include "platform/linux/linuxdesktop.h"

#include "platform/linux/buscall.h"
#include "platform/linux/savedialog.h"
#include "platform/linux/settingsprograms.h"

#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

namespace zemrak::linux_ {

namespace {

Q_LOGGING_CATEGORY(lcDesktop, "zemrak.platform")

// A file manager that has to be started first takes its time.
constexpr int fileManagerPatienceMs = 20'000;

bool startDetached(const QStringList &command)
{
    const QString program = QStandardPaths::findExecutable(command.first());
    if (program.isEmpty())
        return false;
    QProcess process;
    process.setProgram(program);
    process.setArguments(command.mid(1));
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return process.startDetached();
}

} // namespace

LinuxDesktop::LinuxDesktop(const QDBusConnection &bus, std::chrono::milliseconds portalPatience)
    : m_bus(bus)
    , m_portalPatience(portalPatience)
{
}

void LinuxDesktop::chooseSaveFile(const SaveQuestion &question, QObject *context, Chosen chosen)
{
    auto *dialog = new SaveDialog(m_bus, question, context, std::move(chosen), this);
    dialog->open(m_portalPatience);
}

void LinuxDesktop::reveal(const QString &path)
{
    const QUrl file = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    QDBusMessage message = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"), QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("ShowItems"));
    message.setArguments({QStringList{file.toString(QUrl::FullyEncoded)}, QString()});
    const auto onAnswer = [this, file](const QDBusMessage &reply) {
        if (reply.type() != QDBusMessage::ReplyMessage)
            openUrl(file.adjusted(QUrl::RemoveFilename));
    };
    callAsync(m_bus, message, this, onAnswer, fileManagerPatienceMs);
}

bool LinuxDesktop::openUrl(const QUrl &url)
{
    const bool opened = QDesktopServices::openUrl(url);
    if (!opened)
        qCInfo(lcDesktop) << "No program opens" << url.toString(QUrl::RemoveUserInfo | QUrl::RemoveQuery);
    return opened;
}

bool LinuxDesktop::openSettings(SettingsPane pane)
{
    const QString currentDesktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    for (const QStringList &command : settingsPrograms(pane, currentDesktop)) {
        if (startDetached(command))
            return true;
    }
    qCInfo(lcDesktop) << "No settings program for pane" << static_cast<int>(pane) << "on desktop" << currentDesktop;
    return false;
}

} // namespace zemrak::linux_
