#include "platform/linux/autostartentry.h"
#include "platform/linux/busrunningcopy.h"
#include "platform/linux/desktopnotifier.h"
#include "platform/linux/linuxdesktop.h"
#include "platform/linux/parentdeathguard.h"
#include "platform/linux/posixsignals.h"
#include "platform/linux/procportholders.h"
#include "platform/linux/sessioninstance.h"
#include "platform/linux/settingsportal.h"
#include "platform/linux/sleepinhibitors.h"
#include "platform/linux/systemtray.h"
#include "platform/platform.h"

#include <QStandardPaths>

#include <ctime>

namespace zemrak::platform {

std::unique_ptr<AppearanceSettings> makeAppearanceSettings()
{
    return std::make_unique<linux_::SettingsPortal>(QDBusConnection::sessionBus());
}

std::unique_ptr<ChildGuard> makeChildGuard()
{
    return std::make_unique<linux_::ParentDeathGuard>();
}

std::unique_ptr<LoginItem> makeLoginItem(const QString &program, const QString &icon)
{
    return std::make_unique<linux_::AutostartEntry>(program, icon);
}

std::unique_ptr<Desktop> makeDesktop()
{
    return std::make_unique<linux_::LinuxDesktop>(QDBusConnection::sessionBus());
}

std::unique_ptr<Notifier> makeNotifier(const QString &iconFile)
{
    // The runtime folder goes with the login session, and with it go the notifications that the ledger counts.
    const QString ledger = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation)
        + QStringLiteral("/zemrak-printer-notifications.json");
    return std::make_unique<linux_::DesktopNotifier>(QDBusConnection::sessionBus(), ledger, iconFile);
}

std::unique_ptr<PortHolders> makePortHolders()
{
    return std::make_unique<linux_::ProcPortHolders>();
}

std::unique_ptr<ProcessActivities> makeProcessActivities()
{
    return std::make_unique<linux_::SleepInhibitors>();
}

std::unique_ptr<RunningCopy> makeRunningCopy()
{
    return std::make_unique<linux_::BusRunningCopy>();
}

std::unique_ptr<SingleInstance> makeSingleInstance()
{
    return std::make_unique<linux_::SessionInstance>();
}

std::unique_ptr<StatusItem> makeStatusItem()
{
    return std::make_unique<linux_::SystemTray>();
}

std::unique_ptr<TerminationSignals> makeTerminationSignals()
{
    return std::make_unique<linux_::PosixSignals>();
}

std::chrono::milliseconds systemUptime()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec));
}

} // namespace zemrak::platform
