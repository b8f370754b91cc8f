#include "app/platformhost.h"

#include "host/detachedshell.h"
#include "platform/platform.h"

#include <QCoreApplication>

namespace zemrak {

PlatformHost::PlatformHost(const ApplicationBundle &bundle)
    : m_childGuard(platform::makeChildGuard())
    , m_notifier(platform::makeNotifier(bundle.logo()))
    , m_loginItem(platform::makeLoginItem(bundle.program(), bundle.logo()))
    , m_activities(platform::makeProcessActivities())
    , m_desktop(platform::makeDesktop())
    , m_portHolders(platform::makePortHolders())
{
}

PlatformHost::~PlatformHost() = default;

AgentHost PlatformHost::forAgent()
{
    return {*m_childGuard, *m_notifier, *m_loginItem, *m_activities, *m_desktop, *m_portHolders,
        {.startShell = [](const QString &line) { return startDetachedShell(line); },
            .terminate = &QCoreApplication::quit}};
}

} // namespace zemrak
