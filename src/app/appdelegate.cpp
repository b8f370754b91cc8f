#include "app/appdelegate.h"

#include "app/servicecommand.h"
#include "app/statusreport.h"
#include "health/statusicon.h"
#include "platform/platform.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QLoggingCategory>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcApp, "zemrak.app")

// From the window's close until its deferred deletions have run as well.
constexpr std::chrono::seconds windowGone(1);
// A panel may start after the application; after this time none is expected.
constexpr std::chrono::seconds trayPatience(10);

} // namespace

AppDelegate::AppDelegate(const ApplicationBundle &bundle)
    : m_logo(std::async(std::launch::async, readLogo, bundle.logo()))
    , m_instance(platform::makeSingleInstance())
    , m_signals(platform::makeTerminationSignals())
    , m_bundle(bundle)
    , m_host(bundle)
    , m_agent({.bundle = bundle, .configDir = serviceConfigDir()}, m_defaults, m_clock, m_host.forAgent())
    , m_window(bundle,
          {.agent = m_agent,
              .defaults = m_defaults,
              .clock = m_clock,
              .makeAppearanceSettings = &platform::makeAppearanceSettings})
{
}

AppDelegate::~AppDelegate() = default;

bool AppDelegate::finishLaunching()
{
    // Not in the command-line modes: a script may ask for those at any time.
    if (isAutomaticStart(QCoreApplication::arguments(), platform::systemUptime()))
        m_agent.recordSystemStart();
    m_host.notifier().onClicked([this](const QString &activationToken) {
        m_agent.setRequestedPage(Page::Alerts);
        revealMainWindow(activationToken);
    });
    m_host.notifier().install();
    m_agent.healLoginItemIfNeeded();
    m_agent.restoreKeepAwake();
    m_instance->onActivated([this] { revealMainWindow(); });
    m_instance->onAsked([this] { return QJsonDocument(statusReport(m_agent)).toJson(QJsonDocument::Compact); });
    if (!m_instance->claim())
        return false;
    m_signals->onRequested([] { QCoreApplication::quit(); });
    connect(qApp, &QCoreApplication::aboutToQuit, this, &AppDelegate::willTerminate);
    m_agent.start();
    m_window.onClosed([this] { m_clock.after(windowGone, this, [this] { tidyUp(); }); });
    createStatusBar();
    m_activity = m_host.activities().begin(
        ProcessActivities::IdleSleep::Allowed, QStringLiteral("Zemrak Printer is serving print requests"));
    // Started with the computer, the application stays in the tray, unless the person has not set it up yet.
    const bool automatic = QCoreApplication::arguments().contains(automaticStartArgument);
    if (!automatic || !m_defaults.boolean(QLatin1String("onboardingDone")))
        revealMainWindow();
    else
        m_clock.after(trayPatience, this, [this] { revealWithoutTray(); });
    return true;
}

void AppDelegate::createStatusBar()
{
    m_statusItem = platform::makeStatusItem();
    m_statusBar = std::make_unique<StatusBarController>(*m_statusItem, m_logo.get());
    connect(m_statusBar.get(), &StatusBarController::commandChosen, this, &AppDelegate::carryOut);
    connect(&m_agent, &Agent::stateChanged, this, &AppDelegate::updateStatusBar);
    connect(&m_agent, &Agent::portConflictChanged, this, &AppDelegate::updateStatusBar);
    connect(&m_agent, &Agent::launchAtLoginChanged, this, &AppDelegate::updateStatusBar);
    connect(&m_agent, &Agent::loginNeedsApprovalChanged, this, &AppDelegate::updateStatusBar);
    updateStatusBar();
}

void AppDelegate::updateStatusBar()
{
    m_statusBar->update(m_agent.health(), m_agent.launchAtLogin(), m_agent.loginNeedsApproval());
}

void AppDelegate::carryOut(StatusCommand command)
{
    switch (command) {
    case StatusCommand::ShowWindow:
        revealMainWindow();
        break;
    case StatusCommand::Restart:
        m_agent.restart();
        break;
    case StatusCommand::Quit:
        QCoreApplication::quit(); // aboutToQuit() calls willTerminate(), which stops the service
        break;
    case StatusCommand::ToggleLogin:
        m_agent.setLaunchAtLogin(!m_agent.launchAtLogin());
        break;
    case StatusCommand::Scan:
        revealMainWindow();
        m_agent.runScan();
        break;
    case StatusCommand::OpenLoginSettings:
        m_agent.systemSettings().open(Desktop::SettingsPane::LoginItems);
        break;
    }
}

void AppDelegate::willTerminate()
{
    m_window.close(); // while the service still takes what an open sheet has to save
    m_agent.disconnect(this); // the status item is about to be destroyed
    m_statusBar.reset();
    m_statusItem.reset(); // before shutDown(), which may wait for seconds
    m_agent.shutDown();
}

void AppDelegate::tidyUp()
{
    if (!m_window.isOpen())
        platform::returnMemory();
}

// On a desktop without a tray the person would see nothing of the application at all.
void AppDelegate::revealWithoutTray()
{
    if (m_statusItem && !m_statusItem->isAvailable())
        revealMainWindow();
}

void AppDelegate::revealMainWindow(const QString &activationToken)
{
    qCInfo(lcApp) << "Asked to show the main window";
    m_window.show(activationToken);
}

} // namespace zemrak
