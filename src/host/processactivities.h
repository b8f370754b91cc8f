#pragma once

#include <QString>

#include <memory>

namespace zemrak {

/// Tells the system what the application is busy with, so that it does not put the computer to sleep meanwhile.
class ProcessActivities
{
public:
    virtual ~ProcessActivities() = default;

    /// An activity under way; it ends with this object, and with the process, however that ends.
    class Activity
    {
    public:
        virtual ~Activity() = default;
    };

    enum class IdleSleep
    {
        Allowed,
        Forbidden ///< the display may still dim and sleep
    };

    /// Begins an activity; never null and never blocks. `reason` is shown to the person by the system's own tools, in
    /// English. Where the system cannot be told now, it is told as soon as it can be, as long as the activity lasts.
    /// Main thread only.
    [[nodiscard]] virtual std::unique_ptr<Activity> begin(IdleSleep idleSleep, const QString &reason) = 0;
};

} // namespace zemrak
