#pragma once

#include "host/processactivities.h"

#include <QDBusConnection>

#include <functional>

namespace zemrak::linux_ {

/// Forbids sleep at every place of a Linux desktop that would decide on it: logind, and the session's own power
/// management where there is one. The screen may still go dark. Nothing needs to be told of an activity that lets the
/// computer sleep: processes are not throttled here for being out of sight.
class SleepInhibitors final : public ProcessActivities
{
public:
    explicit SleepInhibitors(
        std::function<QDBusConnection()> systemBus = [] { return QDBusConnection::systemBus(); },
        std::function<QDBusConnection()> sessionBus = [] { return QDBusConnection::sessionBus(); });

    [[nodiscard]] std::unique_ptr<Activity> begin(IdleSleep idleSleep, const QString &reason) override;

private:
    std::function<QDBusConnection()> m_systemBus; ///< connected to when it is needed, which is seldom
    std::function<QDBusConnection()> m_sessionBus;
};

} // namespace zemrak::linux_
