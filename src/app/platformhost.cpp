#include "app/platformhost.h"

#include "platform/platform.h"

namespace zemrak {

PlatformHost::PlatformHost(const ApplicationBundle &bundle)
    : m_childGuard(platform::makeChildGuard())
    , m_notifier(platform::makeNotifier(bundle.logo()))
    , m_loginItem(platform::makeLoginItem(bundle.program(), bundle.logo()))
    , m_activities(platform::makeProcessActivities())
{
}

PlatformHost::~PlatformHost() = default;

AgentHost PlatformHost::forAgent()
{
    return {*m_childGuard, *m_notifier, *m_loginItem, *m_activities};
}

} // namespace zemrak
