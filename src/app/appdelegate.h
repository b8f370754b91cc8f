#pragma once

#include "app/agent.h"
#include "app/platformhost.h"
#include "app/windowloader.h"
#include "base/clock.h"
#include "health/statusbarcontroller.h"
#include "health/statusitem.h"
#include "host/applicationbundle.h"
#include "host/singleinstance.h"
#include "host/terminationsignals.h"
#include "host/userdefaults.h"

#include <QImage>
#include <QObject>

#include <future>
#include <memory>

namespace zemrak {

/// Start and end of the interactive application, and the owner of all that lives in between. Main thread only.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    explicit AppDelegate(const ApplicationBundle &bundle);
    ~AppDelegate() override;

    /// Starts up, in an order that matters: what concerns this person's settings comes first, in a second copy as well;
    /// the service, the tray and the window once this copy knows that it is alone. False: another copy runs, and this
    /// process is to end with status 0, saying nothing.
    [[nodiscard]] bool finishLaunching();

private:
    void willTerminate();
    void revealMainWindow(const QString &activationToken = {});
    void revealWithoutTray();
    void tidyUp();
    void createStatusBar();
    void updateStatusBar();
    void carryOut(StatusCommand command);

    std::future<QImage> m_logo; ///< read while the desktop is asked whether another copy runs
    SystemClock m_clock;
    UserDefaults m_defaults;
    std::unique_ptr<SingleInstance> m_instance;
    std::unique_ptr<TerminationSignals> m_signals;
    ApplicationBundle m_bundle;
    PlatformHost m_host;
    Agent m_agent;
    std::unique_ptr<ProcessActivities::Activity> m_activity; ///< as long as print requests are served
    WindowLoader m_window;
    std::unique_ptr<StatusItem> m_statusItem; ///< before what shows itself in it
    std::unique_ptr<StatusBarController> m_statusBar;
};

} // namespace zemrak
