#include "host/portconflictreport.h"

#include "host/privatefile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcConflict, "zemrak.host")

} // namespace

PortConflictReport::PortConflictReport(const PortHolders &holders, Clock &clock, QString recordFile, QObject *parent)
    : QObject(parent)
    , m_holders(holders)
    , m_clock(clock)
    , m_recordFile(std::move(recordFile))
{
    m_worker.setMaxThreadCount(1);
}

PortConflictReport::~PortConflictReport()
{
    m_cancelled = true;
    m_worker.waitForDone();
}

void PortConflictReport::report(const QList<quint16> &ports)
{
    if (std::exchange(m_looking, true))
        return;
    const std::chrono::milliseconds now(m_clock.wallTime());
    m_worker.start([this, ports, now] {
        const QList<PortHolder> holders = m_holders.find(ports, m_cancelled);
        if (m_cancelled)
            return;
        // When nobody holds the port any more, the record of who held it stays for support.
        if (!holders.isEmpty()) {
            if (const QString fault = writePrivateFile(m_recordFile, conflictRecord(holders, now)); !fault.isEmpty())
                qCWarning(lcConflict) << "The port conflict was not recorded:" << fault;
        }
        QMetaObject::invokeMethod(
            this, [this, holders] { conclude(holders); }, Qt::QueuedConnection);
    });
}

void PortConflictReport::conclude(const QList<PortHolder> &holders)
{
    m_looking = false;
    QString lines;
    for (const PortHolder &holder : holders)
        lines += holderLine(holder) + QLatin1Char('\n');
    Q_EMIT logged(
        lines.isEmpty() ? QStringLiteral("nobody is seen holding the port now; it may have become free\n") : lines);
}

QString holderLine(const PortHolder &holder)
{
    QString who = QStringLiteral("a process that is not visible to this user");
    if (holder.processId) {
        who = QStringLiteral("process %1").arg(*holder.processId);
        if (!holder.program.isEmpty())
            who += QStringLiteral(" (%1)").arg(holder.program);
    }
    if (!holder.user.isEmpty())
        who += QStringLiteral(" of user %1").arg(holder.user);
    else if (holder.userId)
        who += QStringLiteral(" of user number %1").arg(*holder.userId);
    return QStringLiteral("port %1 is held by %2").arg(QString::number(holder.port), who);
}

QByteArray conflictRecord(const QList<PortHolder> &holders, std::chrono::milliseconds at)
{
    QJsonArray list;
    for (const PortHolder &holder : holders) {
        QJsonObject entry{{QStringLiteral("port"), holder.port}};
        if (holder.processId)
            entry.insert(QStringLiteral("processId"), *holder.processId);
        if (!holder.program.isEmpty())
            entry.insert(QStringLiteral("program"), holder.program);
        if (holder.userId)
            entry.insert(QStringLiteral("userId"), qint64(*holder.userId));
        if (!holder.user.isEmpty())
            entry.insert(QStringLiteral("user"), holder.user);
        list.append(entry);
    }
    const QJsonObject record{{QStringLiteral("at"), qint64(at.count())}, {QStringLiteral("holders"), list}};
    return QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace zemrak
