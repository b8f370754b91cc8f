#pragma once

#include <QDateTime>
#include <QString>

namespace zemrak {

/// The status line of the start with the computer. `lastSystemStart` is invalid when no automatic start was seen yet;
/// `now` is in milliseconds since 1970-01-01 UTC.
[[nodiscard]] QString loginStatus(bool needsApproval, bool launchAtLogin, const QDateTime &lastSystemStart, qint64 now);

} // namespace zemrak
