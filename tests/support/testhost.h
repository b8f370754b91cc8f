#pragma once

#include "app/agent.h"
#include "platform/none/inert.h"
#include "support/fakebundle.h"
#include "support/fakedesktop.h"
#include "support/fakeloginitem.h"
#include "support/recordingnotifier.h"

namespace zemrak::test {

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
