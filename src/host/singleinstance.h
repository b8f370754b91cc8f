#pragma once

#include <QByteArray>

#include <functional>

namespace zemrak {

/// Keeps the application to one running copy a user.
class SingleInstance
{
public:
    virtual ~SingleInstance() = default;

    /// Tries to become the one copy. False: another one runs and has taken the request to show its window, or has not
    /// answered for ten seconds; this process is to end. A copy that is just ending is waited for. Called once, on the
    /// main thread, which it blocks meanwhile. The claim ends with this object or with the process, however that ends.
    [[nodiscard]] virtual bool claim() = 0;

    /// Called on the main thread whenever another copy, or the desktop, asks this one to show its window. Set before
    /// claim().
    virtual void onActivated(std::function<void()> show) = 0;

    /// Called on the main thread whenever another process of this user asks how things stand, as RunningCopy does;
    /// returns the report. Set before claim().
    virtual void onAsked(std::function<QByteArray()> report) = 0;
};

} // namespace zemrak
