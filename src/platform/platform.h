#pragma once

#include "health/notifier.h"
#include "health/statusitem.h"
#include "host/appearancesettings.h"
#include "host/childguard.h"
#include "host/desktop.h"
#include "host/loginitem.h"
#include "host/portholders.h"
#include "host/processactivities.h"
#include "host/runningcopy.h"
#include "host/singleinstance.h"
#include "host/terminationsignals.h"

#include <chrono>
#include <memory>

namespace zemrak {

/// Makes the running platform's side of every interface. One implementation is linked in.
namespace platform {

[[nodiscard]] std::unique_ptr<AppearanceSettings> makeAppearanceSettings();
[[nodiscard]] std::unique_ptr<ChildGuard> makeChildGuard();
/// `program` is what is to start at login, `icon` the picture beside it in the desktop's settings.
[[nodiscard]] std::unique_ptr<LoginItem> makeLoginItem(const QString &program, const QString &icon);
/// Needs a QApplication.
[[nodiscard]] std::unique_ptr<Desktop> makeDesktop();
/// `iconFile`: the picture beside a notification's text.
[[nodiscard]] std::unique_ptr<Notifier> makeNotifier(const QString &iconFile);
[[nodiscard]] std::unique_ptr<PortHolders> makePortHolders();
[[nodiscard]] std::unique_ptr<ProcessActivities> makeProcessActivities();
[[nodiscard]] std::unique_ptr<RunningCopy> makeRunningCopy();
[[nodiscard]] std::unique_ptr<SingleInstance> makeSingleInstance();
/// Needs a QApplication.
[[nodiscard]] std::unique_ptr<StatusItem> makeStatusItem();
[[nodiscard]] std::unique_ptr<TerminationSignals> makeTerminationSignals();
/// Gives back what memory this process holds and has no use for just now. Takes a few milliseconds.
void returnMemory();
/// Time since the computer was started.
[[nodiscard]] std::chrono::milliseconds systemUptime();

} // namespace platform

} // namespace zemrak
