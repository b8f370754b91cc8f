#pragma once

#include "model/agentstate.h"
#include "model/alertitem.h"

#include <QList>
#include <QString>

#include <optional>

namespace zemrak {

/// What is known of the service at one moment, as far as the application's own alerts depend on it.
struct ServiceSilence
{
    bool answers = false; ///< a state snapshot is held
    bool portConflict = false; ///< another program holds the port
    qint64 silentFor = 0; ///< milliseconds since the application's start
    qint64 now = 0; ///< milliseconds since 1970-01-01 UTC
};

/// The alert the service cannot raise about itself: that its port is taken, or, once it has had ten seconds to come up,
/// that it does not answer. Made afresh at every call, always under the same id; none while the service answers.
[[nodiscard]] std::optional<AlertItem> localAlert(const ServiceSilence &silence);

/// The number on the alerts entry: the local alert and the service's unread ones, resolved or not.
[[nodiscard]] qint64 alertsBadge(const std::optional<AlertItem> &local, const QList<AlertItem> &alerts);

} // namespace zemrak
