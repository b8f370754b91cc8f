#pragma once

#include "host/runningcopy.h"

namespace zemrak::linux_ {

/// Asks over the session bus. It never starts a bus, and so never needs a display.
class BusRunningCopy final : public RunningCopy
{
public:
    [[nodiscard]] RunningCopyAnswer ask(std::chrono::milliseconds patience) override;
};

} // namespace zemrak::linux_
