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
    return true;
}

void AppDelegate::willTerminate()
{
    m_agent.shutDown();
}

void AppDelegate::revealMainWindow()
{
    qCInfo(lcApp) << "Asked to show the main window";
}

} // namespace zemrak
