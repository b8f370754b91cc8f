#pragma once

#include <chrono>

namespace zemrak {

/// How the print service ended.
struct ServiceExit
{
    bool bySignal = false;
    int status = 0; ///< exit status; without meaning when it ended by a signal
};

/// The service says with this exit status, and only with it, that another program holds its port.
constexpr int portTakenStatus = 78;

[[nodiscard]] constexpr bool isPortConflict(const ServiceExit &exit)
{
    return !exit.bySignal && exit.status == portTakenStatus;
}

/// How long to wait before the service is launched again.
[[nodiscard]] constexpr std::chrono::milliseconds relaunchDelay(const ServiceExit &exit)
{
    using namespace std::chrono_literals;
    return isPortConflict(exit) ? 15s : 2s;
}

} // namespace zemrak
