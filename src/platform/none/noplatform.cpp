#include "platform/none/inert.h"
#include "platform/platform.h"

namespace zemrak::platform {

std::unique_ptr<AppearanceSettings> makeAppearanceSettings()
{
    return std::make_unique<none::NoAppearanceSettings>();
}

std::unique_ptr<ChildGuard> makeChildGuard()
{
    return std::make_unique<none::Unguarded>();
}

std::unique_ptr<LoginItem> makeLoginItem(const QString &, const QString &)
{
    return std::make_unique<none::NoLoginItem>();
}

std::unique_ptr<Desktop> makeDesktop()
{
    return std::make_unique<none::BareDesktop>();
}

std::unique_ptr<Notifier> makeNotifier(const QString &)
{
    return std::make_unique<none::SilentNotifier>();
}

std::unique_ptr<PortHolders> makePortHolders()
{
    return std::make_unique<none::NoPortHolders>();
}

std::unique_ptr<ProcessActivities> makeProcessActivities()
{
    return std::make_unique<none::UntoldActivities>();
}

std::unique_ptr<RunningCopy> makeRunningCopy()
{
    return std::make_unique<none::NoRunningCopy>();
}

std::unique_ptr<SingleInstance> makeSingleInstance()
{
    return std::make_unique<none::AlwaysAlone>();
}

std::unique_ptr<StatusItem> makeStatusItem()
{
    return std::make_unique<none::InvisibleStatusItem>();
}

std::unique_ptr<TerminationSignals> makeTerminationSignals()
{
    return std::make_unique<none::DefaultSignals>();
}

void returnMemory()
{
    qInfo("No memory is given back on this platform");
}

std::chrono::milliseconds systemUptime()
{
    return std::chrono::hours(24);
}

} // namespace zemrak::platform
