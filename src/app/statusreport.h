#pragma once

#include "host/runningcopy.h"

#include <QJsonObject>
#include <QString>

namespace zemrak {

class Agent;

/// How things stand, for scripts and for support; docs/status.md describes it field by field. It holds no token, no
/// site and no receipt.
[[nodiscard]] QJsonObject statusReport(const Agent &agent);

/// What the status command prints, and how it ends.
struct StatusOutcome
{
    int exitStatus = 0; ///< 0 all is well, 1 a problem or no answer, 2 no copy runs
    QString output; ///< for the standard output
    QString error; ///< for the standard error stream
};

/// The outcome of `answer`, in words or as one JSON object.
[[nodiscard]] StatusOutcome statusOutcome(const RunningCopyAnswer &answer, bool asJson);

} // namespace zemrak
