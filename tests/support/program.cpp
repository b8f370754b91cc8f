#include "support/program.h"

#include <QDir>
#include <QFile>
#include <QTcpSocket>

#include <csignal>

namespace zemrak::test {

namespace {

// The state and the parent of a process; a dead one that nobody has cleared away yet is in state 'Z'.
struct ProcessStat
{
    char state = 'Z';
    qint64 parent = 0;
};

ProcessStat statOf(qint64 processId)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(processId));
    if (!stat.open(QIODevice::ReadOnly))
        return {};
    const QByteArray line = stat.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    return {fields.value(0).isEmpty() ? 'Z' : fields.value(0).at(0), fields.value(1).toLongLong()};
}

} // namespace

const QString &builtBundle()
{
    static const QString path = QStringLiteral(ZEMRAK_BUNDLE);
    return path;
}

Program::Program(const QTemporaryDir &home, const PrivateBus &bus, const QStringList &arguments, const QString &bundle,
    const QHash<QString, QString> &environment)
{
    QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
    all.insert(QStringLiteral("HOME"), home.path());
    all.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
    all.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral(".config")));
    all.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());
    all.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("zemrak.*=true;qt.network.*=true"));
    for (auto each = environment.cbegin(); each != environment.cend(); ++each)
        all.insert(each.key(), each.value());
    m_process.setProcessEnvironment(all);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(bundle + QStringLiteral("/bin/zemrak-printer"), arguments);
}

Program::~Program()
{
    if (isAlive())
        signal(SIGTERM);
    if (!m_process.waitForFinished(6000))
        m_process.kill();
    m_process.waitForFinished();
}

bool Program::endedWith(int status) const
{
    return !isAlive() && m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == status;
}

void Program::signal(int number) const
{
    ::kill(static_cast<pid_t>(m_process.processId()), number);
}

bool Program::maps(const char *library) const
{
    QFile maps(QStringLiteral("/proc/%1/maps").arg(processId()));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(library);
}

QByteArray Program::output()
{
    m_output += m_process.readAll();
    return m_output;
}

void writeSettings(const QTemporaryDir &home, const QByteArray &lines)
{
    QDir(home.path()).mkpath(QStringLiteral(".config/zemrak-printer"));
    QFile settings(home.filePath(QStringLiteral(".config/zemrak-printer/settings.ini")));
    if (!settings.open(QIODevice::WriteOnly) || settings.write("[General]\n" + lines) < 0)
        qFatal("The settings cannot be written");
}

bool servicePortTaken()
{
    QTcpSocket probe;
    probe.connectToHost(QStringLiteral("127.0.0.1"), 17731);
    return probe.waitForConnected(500);
}

bool exists(qint64 processId)
{
    return statOf(processId).state != 'Z';
}

QList<qint64> childrenOf(qint64 parent)
{
    QList<qint64> found;
    for (const QString &entry : QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs)) {
        if (const ProcessStat stat = statOf(entry.toLongLong()); stat.state != 'Z' && stat.parent == parent)
            found.append(entry.toLongLong());
    }
    return found;
}

} // namespace zemrak::test
