#include "soak/figures.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QStringList>
#include <QVariantMap>

namespace zemrak::soak {

namespace {

// The number after `label` in a file of lines such as "VmRSS:   1234 kB".
qint64 numberIn(const QString &file, const QByteArray &label)
{
    QFile lines(file);
    if (!lines.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : lines.readAll().split('\n')) {
        if (line.startsWith(label))
            return line.mid(label.size()).simplified().split(' ').value(0).toLongLong();
    }
    return 0;
}

int matchesOf(const QString &connection, const QDBusConnection &bus)
{
    QDBusMessage question = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus.Debug.Stats"),
        QStringLiteral("GetConnectionStats"));
    question.setArguments({connection});
    const QDBusMessage answer = bus.call(question);
    const auto stats = qdbus_cast<QVariantMap>(answer.arguments().value(0));
    if (!stats.contains(QStringLiteral("MatchRules")))
        qFatal("The bus does not count matches: %s", qUtf8Printable(answer.errorMessage()));
    return stats.value(QStringLiteral("MatchRules")).toInt();
}

} // namespace

Figures Figures::of(qint64 processId, const QDBusConnection &bus)
{
    const QString folder = QStringLiteral("/proc/%1").arg(processId);
    Figures figures;
    figures.ownKiB = numberIn(folder + QStringLiteral("/smaps_rollup"), "Anonymous:");
    figures.proportionalKiB = numberIn(folder + QStringLiteral("/smaps_rollup"), "Pss:");
    figures.residentKiB = numberIn(folder + QStringLiteral("/status"), "VmRSS:");
    figures.threads = static_cast<int>(numberIn(folder + QStringLiteral("/status"), "Threads:"));
    figures.files = static_cast<int>(
        QDir(folder + QStringLiteral("/fd")).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
    for (const QString &name : bus.interface()->registeredServiceNames().value()) {
        if (name.startsWith(QLatin1Char(':')) && bus.interface()->servicePid(name).value() == processId) {
            ++figures.connections;
            figures.matches += matchesOf(name, bus);
        }
    }
    return figures;
}

} // namespace zemrak::soak
