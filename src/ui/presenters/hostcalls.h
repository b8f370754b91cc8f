#pragma once

#include <functional>

namespace zemrak {

/// What the pages ask of the application besides printing. One that is left empty does nothing.
struct HostCalls
{
    std::function<void(bool on)> setLaunchAtLogin;
    std::function<void()> reRegisterLogin;
    /// `done` may be empty; it is called once at most, on the main thread.
    std::function<void(std::function<void(bool trusted)> done)> trustForSafari;
    std::function<void(bool on)> setKeepAwake;
    std::function<void()> checkUpdate;
    std::function<void()> installUpdate;
    std::function<void()> runScan;
    std::function<void()> exportDiagnostics;
    std::function<void()> openLoginSettings;
    std::function<void()> openNotificationSettings;
    std::function<void()> openLocalNetworkSettings;
};

/// Calls `call` if there is one.
template <typename Call, typename... Arguments> void callIf(const Call &call, Arguments &&...arguments)
{
    if (call)
        call(std::forward<Arguments>(arguments)...);
}

} // namespace zemrak
