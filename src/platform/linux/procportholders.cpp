#include "platform/linux/procportholders.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <array>
#include <chrono>

#include <dirent.h>
#include <pwd.h>
#include <unistd.h>

namespace zemrak::linux_ {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds patience = 2s; ///< a computer may run very many processes with very many files
constexpr qint64 longestList = 16 * 1024 * 1024;

QByteArray contentOf(const QString &name, qint64 most)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.read(most) : QByteArray();
}

// Addresses stand in hexadecimal, in the processor's byte order, four bytes at a time.
bool takesInLoopback(const QByteArray &address)
{
    if constexpr (Q_BYTE_ORDER == Q_LITTLE_ENDIAN) {
        return address == "0100007F" || address == "00000000" || address == QByteArray(32, '0')
            || address == "0000000000000000FFFF00000100007F" || address == "0000000000000000FFFF000000000000";
    } else {
        return address == "7F000001" || address == "00000000" || address == QByteArray(32, '0')
            || address == "00000000000000000000FFFF7F000001" || address == "00000000000000000000FFFF00000000";
    }
}

QString loginName(quint32 userId)
{
    passwd entry{};
    passwd *found = nullptr;
    std::array<char, 16384> strings{};
    getpwuid_r(userId, &entry, strings.data(), strings.size(), &found);
    return found ? QString::fromLocal8Bit(found->pw_name) : QString();
}

struct Process
{
    qint64 id = 0;
    QSet<QByteArray> sockets; ///< those of the wanted ones that it has open
};

// The wanted sockets among a process's open files, none when those are hidden from us.
QSet<QByteArray> openSockets(const QByteArray &process, const QHash<QByteArray, QByteArray> &wanted)
{
    QSet<QByteArray> found;
    const QByteArray folder = "/proc/" + process + "/fd";
    DIR *files = opendir(folder.constData());
    if (!files)
        return found;
    std::array<char, 64> target{};
    while (const dirent *file = readdir(files)) {
        const ssize_t length = readlinkat(dirfd(files), file->d_name, target.data(), target.size());
        if (length <= 0)
            continue;
        if (const auto socket = wanted.constFind(QByteArray::fromRawData(target.data(), length));
            socket != wanted.cend())
            found.insert(*socket);
    }
    closedir(files);
    return found;
}

QList<Process> processesWith(const QList<ListeningSocket> &sockets, const std::atomic_bool &cancelled)
{
    QHash<QByteArray, QByteArray> wanted; // by how a link to it reads
    for (const ListeningSocket &socket : sockets)
        wanted.insert("socket:[" + socket.inode + "]", socket.inode);

    QList<Process> found;
    const QDeadlineTimer deadline(patience);
    DIR *processes = opendir("/proc");
    if (!processes)
        return found;
    while (const dirent *entry = readdir(processes)) {
        if (cancelled || deadline.hasExpired())
            break;
        bool isProcess = false;
        const qint64 id = QByteArray(entry->d_name).toLongLong(&isProcess);
        if (!isProcess)
            continue;
        if (QSet<QByteArray> open = openSockets(entry->d_name, wanted); !open.isEmpty())
            found.append({.id = id, .sockets = std::move(open)});
    }
    closedir(processes);
    return found;
}

// A process chooses its own name: whatever that is, it stays one word of one line.
QString plainWord(const QByteArray &word)
{
    return QString::fromLocal8Bit(word).simplified().remove(QRegularExpression(QStringLiteral("\\p{C}"))).left(64);
}

QString fileName(const QByteArray &path)
{
    return plainWord(path.mid(path.lastIndexOf('/') + 1));
}

QString nameOfProcess(qint64 id)
{
    constexpr qint64 enough = 4096;
    const QString folder = QStringLiteral("/proc/%1/").arg(id);
    const QString name = programName(contentOf(folder + QStringLiteral("cmdline"), enough));
    return name.isEmpty() ? plainWord(contentOf(folder + QStringLiteral("comm"), enough)) : name;
}

} // namespace

QList<ListeningSocket> listeningSockets(const QByteArray &list, const QList<quint16> &ports)
{
    // "0: 0100007F:4543 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000  0  inode ..."
    constexpr qsizetype localColumn = 1;
    constexpr qsizetype stateColumn = 3;
    constexpr qsizetype userColumn = 7;
    constexpr qsizetype inodeColumn = 9;
    QList<ListeningSocket> found;
    for (const QByteArray &line : list.split('\n')) {
        const QList<QByteArray> columns = line.simplified().split(' ');
        if (columns.size() <= inodeColumn || columns.at(stateColumn) != "0A")
            continue;
        const QList<QByteArray> local = columns.at(localColumn).split(':');
        bool isPort = false;
        const quint16 port = local.value(1).toUShort(&isPort, 16);
        if (isPort && ports.contains(port) && takesInLoopback(local.constFirst()))
            found.append({.port = port, .userId = columns.at(userColumn).toUInt(), .inode = columns.at(inodeColumn)});
    }
    return found;
}

QString programName(const QByteArray &commandLine)
{
    const QList<QByteArray> words = commandLine.split('\0');
    const QString program = fileName(words.constFirst());
    const QByteArray script = words.value(1);
    const bool isScript = !script.startsWith('-')
        && (script.endsWith("js") || script.endsWith(".py") || script.endsWith(".pl") || script.endsWith(".jar"));
    return isScript ? program + QLatin1Char(' ') + fileName(script) : program;
}

QList<PortHolder> ProcPortHolders::find(const QList<quint16> &ports, const std::atomic_bool &cancelled) const
{
    QList<ListeningSocket> sockets;
    for (const char *list : {"/proc/net/tcp", "/proc/net/tcp6"})
        sockets += listeningSockets(contentOf(QString::fromLatin1(list), longestList), ports);
    if (sockets.isEmpty())
        return {};

    const QList<Process> processes = processesWith(sockets, cancelled);
    QList<PortHolder> holders;
    const auto add = [&holders](const PortHolder &holder) {
        if (!holders.contains(holder)) // one program may listen on both kinds of address
            holders.append(holder);
    };
    for (const ListeningSocket &socket : std::as_const(sockets)) {
        PortHolder holder{.port = socket.port, .userId = socket.userId, .user = loginName(socket.userId)};
        bool isKnown = false;
        for (const Process &process : processes) {
            if (!process.sockets.contains(socket.inode))
                continue;
            holder.processId = process.id;
            holder.program = nameOfProcess(process.id);
            add(holder);
            isKnown = true;
        }
        if (!isKnown)
            add(holder);
    }
    return holders;
}

} // namespace zemrak::linux_
