#pragma once

#include "app/agent.h"
#include "platform/none/inert.h"
#include "support/fakebundle.h"
#include "support/fakedesktop.h"
#include "support/recordingnotifier.h"

namespace zemrak::test {

/// A login item that is as it was last told to be, unless it does not work.
class FakeLoginItem final : public LoginItem
{
public:
    [[nodiscard]] LoginItemStatus status() const override { return current; }
    [[nodiscard]] std::optional<QString> registerItem() override { return become(LoginItemStatus::Enabled); }
    [[nodiscard]] std::optional<QString> unregisterItem() override { return become(LoginItemStatus::NotRegistered); }

    LoginItemStatus current = LoginItemStatus::NotFound;
    bool works = false;

private:
    std::optional<QString> become(LoginItemStatus status)
    {
        if (!works)
            return QStringLiteral("not on this platform");
        current = status;
        return std::nullopt;
    }
};

/// A computer that does nothing of itself and keeps what it is told to show.
struct TestHost
{
    NoGuard childGuard;
    RecordingNotifier notifier;
    FakeLoginItem loginItem;
    none::UntoldActivities activities;
    FakeDesktop desktop;
    none::NoPortHolders portHolders;

    [[nodiscard]] AgentHost forAgent()
    {
        return {childGuard, notifier, loginItem, activities, desktop, portHolders, {}};
    }
};

} // namespace zemrak::test
