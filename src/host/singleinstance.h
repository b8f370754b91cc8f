#pragma once

#include <functional>

namespace zemrak {

/// Keeps the application to one running copy a user.
class SingleInstance
{
public:
    virtual ~SingleInstance() = default;

    /// Tries to become the one copy. False: another one runs; it has been asked to show its window, and this process
    /// is to end. Called once, on the main thread; blocks for at most a few seconds. The claim ends with this object
    /// or with the process, however that ends.
    [[nodiscard]] virtual bool claim() = 0;

    /// Called on the main thread whenever another copy, or the desktop, asks this one to show its window. Set before
    /// claim().
    virtual void onActivated(std::function<void()> show) = 0;
};

} // namespace zemrak
