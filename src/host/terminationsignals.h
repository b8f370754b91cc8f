#pragma once

#include <functional>

namespace zemrak {

/// Turns the system's polite requests to end (SIGTERM, SIGINT, SIGHUP) into a call on the main thread.
class TerminationSignals
{
public:
    virtual ~TerminationSignals() = default;

    /// `quit` runs in the event loop of the main thread at the first request. A second request while the first is
    /// still being carried out ends the process at once.
    virtual void onRequested(std::function<void()> quit) = 0;
};

} // namespace zemrak
