#pragma once

#include "app/agent.h"
#include "host/applicationbundle.h"

#include <memory>

namespace zemrak {

/// The running platform's side of everything an Agent needs, made together and kept together. Needs the application
/// object.
class PlatformHost
{
public:
    explicit PlatformHost(const ApplicationBundle &bundle);
    ~PlatformHost();

    [[nodiscard]] Notifier &notifier() { return *m_notifier; }
    [[nodiscard]] LoginItem &loginItem() { return *m_loginItem; }
    [[nodiscard]] ProcessActivities &activities() { return *m_activities; }
    [[nodiscard]] AgentHost forAgent();

private:
    std::unique_ptr<ChildGuard> m_childGuard;
    std::unique_ptr<Notifier> m_notifier;
    std::unique_ptr<LoginItem> m_loginItem;
    std::unique_ptr<ProcessActivities> m_activities;
    std::unique_ptr<Desktop> m_desktop;
    std::unique_ptr<PortHolders> m_portHolders;
};

} // namespace zemrak
