#include "platform/linux/autostartentry.h"

#include "platform/linux/desktopentry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace zemrak::linux_ {

namespace {

const QString relativeFile = QStringLiteral("/autostart/com.zemrak.Printer.desktop");
constexpr qint64 longestEntry = 64 * 1024; // bytes; real entries have a few hundred

bool isThere(const QString &file)
{
    // A link that leads nowhere is there too: the desktop finds it, and fails on it.
    const QFileInfo info(file);
    return info.exists() || info.isSymLink();
}

bool isProgram(const QString &name)
{
    if (name.contains(QLatin1Char('/'))) {
        const QFileInfo info(name);
        return info.isFile() && info.isExecutable();
    }
    return !QStandardPaths::findExecutable(name).isEmpty();
}

bool isSwitchedOff(const DesktopEntry &entry)
{
    if (entry.isTrue(QStringLiteral("Hidden"))
        || entry.value(QStringLiteral("X-GNOME-Autostart-enabled")) == QLatin1String("false"))
        return true;
    const QStringList desktops
        = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':'), Qt::SkipEmptyParts);
    const auto names = [&desktops](const QStringList &listed) {
        return std::any_of(listed.begin(), listed.end(), [&](const QString &name) { return desktops.contains(name); });
    };
    const QStringList only = entry.list(QStringLiteral("OnlyShowIn"));
    return (!only.isEmpty() && !names(only)) || names(entry.list(QStringLiteral("NotShowIn")));
}

// The format forbids an equals sign in the name of what is started, and desktops look for the program before they undo
// a doubled percent sign. A program in front that only runs another takes such a name as an argument.
QStringList command(const QString &program)
{
    const QStringList words{program, automaticStartArgument};
    const bool odd = program.contains(QLatin1Char('=')) || program.contains(QLatin1Char('%'));
    return odd ? QStringList{QStringLiteral("nice"), QStringLiteral("-n"), QStringLiteral("0")} + words : words;
}

LoginItemStatus statusOf(const QString &fileName)
{
    QFile file(fileName);
    if (!QFileInfo(fileName).isFile() || !file.open(QIODevice::ReadOnly))
        return LoginItemStatus::NotFound;
    const std::optional<DesktopEntry> entry = DesktopEntry::parse(QString::fromUtf8(file.read(longestEntry)));
    if (!entry)
        return LoginItemStatus::NotFound;
    if (isSwitchedOff(*entry))
        return LoginItemStatus::RequiresApproval;
    const std::optional<QStringList> words = entry->exec();
    const QString condition = entry->value(QStringLiteral("TryExec"));
    const bool starts = entry->value(QStringLiteral("Type")) == QLatin1String("Application") && words
        && isProgram(words->first()) && (condition.isEmpty() || isProgram(condition));
    return starts ? LoginItemStatus::Enabled : LoginItemStatus::NotFound;
}

} // namespace

AutostartEntry::AutostartEntry(QString program, QString icon)
    : m_program(std::move(program))
    , m_icon(std::move(icon))
{
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    m_file = folders.takeFirst() + relativeFile;
    for (const QString &folder : folders)
        m_systemFiles.append(folder + relativeFile);
}

LoginItemStatus AutostartEntry::status() const
{
    if (isThere(m_file))
        return statusOf(m_file);
    for (const QString &file : m_systemFiles) {
        if (isThere(file))
            return statusOf(file);
    }
    return LoginItemStatus::NotRegistered;
}

std::optional<QString> AutostartEntry::registerItem()
{
    const QString text = QStringLiteral("[Desktop Entry]\n"
                                        "Type=Application\n"
                                        "Name=Zemrak Printer\n"
                                        "Comment=Keeps receipt printing running\n"
                                        "Comment[ar]=%1\n"
                                        "Exec=%2\n"
                                        "TryExec=%3\n"
                                        "Icon=%4\n"
                                        "Terminal=false\n"
                                        "StartupNotify=false\n"
                                        "X-GNOME-Autostart-enabled=true\n")
                             .arg(QStringLiteral("يُبقي طباعة الفواتير تعمل"), execValue(command(m_program)),
                                 escapedValue(m_program), escapedValue(m_icon));

    QDir().mkpath(QFileInfo(m_file).path()); // if this fails, so does the opening, and that says why
    QSaveFile file(m_file);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit())
        return QStringLiteral("%1: %2").arg(m_file, file.errorString());
    return std::nullopt;
}

std::optional<QString> AutostartEntry::unregisterItem()
{
    QFile file(m_file);
    if (isThere(m_file) && !file.remove())
        return QStringLiteral("%1: %2").arg(m_file, file.errorString());
    for (const QString &systemFile : m_systemFiles) {
        if (isThere(systemFile))
            return QStringLiteral("%1 starts the application for every user").arg(systemFile);
    }
    return std::nullopt;
}

} // namespace zemrak::linux_
