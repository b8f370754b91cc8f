#pragma once

#include "model/agentstate.h"

#include <QList>
#include <QString>

namespace zemrak {

/// The state of the service and of all printers as one verdict.
struct HealthSummary
{
    bool ok = false; ///< the service answers, knows a printer, and none is offline or in error
    QString headline; ///< one short Arabic sentence
    QList<QString> problems; ///< one Arabic line a problem, in printer order; empty when ok
    qint64 connected = 0; ///< printers that are reachable

    bool operator==(const HealthSummary &) const = default;
};

/// The verdict on a snapshot. Without one (`state` is null) the service does not answer, and `portConflict` tells
/// whether that is because another program holds its port.
[[nodiscard]] HealthSummary summarise(const AgentState *state, bool portConflict);

} // namespace zemrak
