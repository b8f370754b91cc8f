#include "platform/linux/systemtray.h"

#include <QDBusConnection>
#include <QLoggingCategory>
#include <QSystemTrayIcon>

namespace zemrak::linux_ {

namespace {

Q_LOGGING_CATEGORY(lcTray, "zemrak.platform")

} // namespace

SystemTray::SystemTray(std::chrono::milliseconds patience, QObject *parent)
    : QObject(parent)
    , m_host(QDBusConnection::sessionBus())
    , m_x11([this] { m_patience.start(); })
{
    const bool hasBus = QDBusConnection::sessionBus().isConnected();
    m_patience.setSingleShot(true);
    m_patience.setInterval(hasBus ? patience : std::chrono::milliseconds(0));
    connect(&m_patience, &QTimer::timeout, this, &SystemTray::createWhenPossible);
    connect(&m_host, &StatusNotifierHost::presentChanged, this, &SystemTray::createWhenPossible);
    m_patience.start();
}

SystemTray::~SystemTray() = default;

void SystemTray::show(const QIcon &icon, const StatusContent &content)
{
    const bool newIcon = m_icon.cacheKey() != icon.cacheKey();
    m_icon = icon;
    m_content = content;
    if (!m_tray) {
        createWhenPossible();
        return;
    }
    if (newIcon)
        m_tray->setIcon(m_icon);
    if (m_tray->toolTip() != m_content->tooltip)
        m_tray->setToolTip(m_content->tooltip);
    m_menu->show(*m_content);
}

bool SystemTray::isAvailable() const
{
    const bool overBus = m_kind != Kind::OnX11 && m_host.isPresent();
    const bool onX11 = m_kind != Kind::OverBus && m_x11.isPresent();
    return overBus || onX11;
}

void SystemTray::createWhenPossible()
{
    if (m_tray || !m_content)
        return;
    if (m_host.isPresent())
        create(Kind::OverBus);
    else if (!m_patience.isActive() && m_x11.isPresent())
        create(Kind::OnX11);
}

void SystemTray::create(Kind kind)
{
    qCInfo(lcTray) << "There is a tray" << (kind == Kind::OverBus ? "on the session bus" : "on the X11 display");
    m_kind = kind;
    m_menu
        = std::make_unique<TrayMenu>(kind == Kind::OverBus ? TrayMenu::Labels::ForPanel : TrayMenu::Labels::ForWidget);
    m_menu->onCommand([this](StatusCommand command) { choose(command); });

    m_tray = std::make_unique<QSystemTrayIcon>();
    connect(m_tray.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            choose(StatusCommand::ShowWindow);
    });
    // Complete before it is visible: the panel reads it once.
    m_tray->setIcon(m_icon);
    m_tray->setToolTip(m_content->tooltip);
    m_tray->setContextMenu(m_menu->menu());
    m_menu->show(*m_content);
    m_tray->setVisible(true);
    // From here on Qt announces the item again to every panel that comes back.
}

void SystemTray::choose(StatusCommand command)
{
    if (m_chosen)
        m_chosen(command);
}

} // namespace zemrak::linux_
