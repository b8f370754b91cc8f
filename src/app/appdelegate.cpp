#include "app/appdelegate.h"

#include "app/servicecommand.h"
#include "platform/platform.h"

#include <QCoreApplication>
#include <QLoggingCategory>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcApp, "zemrak.app")

} // namespace

AppDelegate::AppDelegate(const ApplicationBundle &bundle)
    : m_childGuard(platform::makeChildGuard())
    , m_instance(platform::makeSingleInstance())
    , m_signals(platform::makeTerminationSignals())
    , m_notifier(platform::makeNotifier(bundle.resource(QStringLiteral("logo-circle.png"))))
    , m_agent({.bundle = bundle, .configDir = serviceConfigDir()}, m_defaults, m_clock, *m_childGuard, *m_notifier)
    , m_bundle(bundle)
{
}

AppDelegate::~AppDelegate() = default;

bool AppDelegate::finishLaunching()
{
    m_notifier->onClicked([this] {
        m_agent.setRequestedPage(Page::Alerts);
        revealMainWindow();
    });
    m_notifier->install();
    m_instance->onActivated([this] { revealMainWindow(); });
    if (!m_instance->claim())
        return false;
    m_signals->onRequested([] { QCoreApplication::quit(); });
    connect(qApp, &QCoreApplication::aboutToQuit, this, &AppDelegate::willTerminate);
    m_agent.start();
    createStatusBar();
    return true;
}

void AppDelegate::createStatusBar()
{
    m_statusItem = platform::makeStatusItem();
    m_statusBar = std::make_unique<StatusBarController>(
        *m_statusItem, QImage(m_bundle.resource(QStringLiteral("logo-circle.png"))));
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
        m_agent.stop();
        QCoreApplication::quit();
        break;
    case StatusCommand::Scan:
    case StatusCommand::ToggleLogin:
    case StatusCommand::OpenLoginSettings:
        qCInfo(lcApp) << "This entry has no operation behind it yet";
        break;
    }
}

void AppDelegate::willTerminate()
{
    m_statusBar.reset();
    m_statusItem.reset(); // gone at once, also when the service takes its time
    m_agent.shutDown();
}

void AppDelegate::revealMainWindow()
{
    qCInfo(lcApp) << "Asked to show the main window";
}

} // namespace zemrak
