#pragma once

#include "base/clock.h"
#include "host/portholders.h"

#include <QObject>
#include <QThreadPool>

#include <atomic>

namespace zemrak {

/// Tells support who holds the service's ports: a line a holder in the service's log, and a file that the service puts
/// into its diagnostics reports once it runs. Main thread, with the looking on a worker; may be destroyed at any time,
/// and nothing is reported then.
class PortConflictReport final : public QObject
{
    Q_OBJECT

public:
    /// `recordFile`: where the latest conflict is kept, readable by its owner only. The others outlive this object.
    PortConflictReport(const PortHolders &holders, Clock &clock, QString recordFile, QObject *parent = nullptr);
    ~PortConflictReport() override;

    /// Looks now. Does nothing while an earlier look is under way.
    void report(const QList<quint16> &ports);

Q_SIGNALS:
    /// The lines for the service's log, with their ends.
    void logged(const QString &lines);

private:
    void conclude(const QList<PortHolder> &holders);

    const PortHolders &m_holders;
    Clock &m_clock;
    const QString m_recordFile;
    std::atomic_bool m_cancelled = false;
    bool m_looking = false;
    QThreadPool m_worker;
};

/// One English line without its end, such as "port 17731 is held by process 4711 (nginx) of user ali".
[[nodiscard]] QString holderLine(const PortHolder &holder);

/// The record as the service reads it: a JSON object of "at" (milliseconds since 1970) and "holders", each with "port"
/// and, where known, "processId", "program", "userId" and "user".
[[nodiscard]] QByteArray conflictRecord(const QList<PortHolder> &holders, std::chrono::milliseconds at);

} // namespace zemrak
