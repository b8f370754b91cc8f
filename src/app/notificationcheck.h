#pragma once

#include "base/clock.h"
#include "health/notifier.h"

#include <QString>

#include <functional>

namespace zemrak {

/// The command-line check of notifications: asks for the status and for permission at once, hands a line for each to
/// `print` as its answer comes, and quits the application with 0 one second after the permission's.
void checkNotifications(Notifier &notifier, Clock &clock, const std::function<void(const QString &line)> &print);

} // namespace zemrak
