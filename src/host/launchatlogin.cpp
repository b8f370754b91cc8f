#include "host/launchatlogin.h"

namespace zemrak {

namespace {

using namespace std::chrono_literals;

constexpr QLatin1String wantedKey("loginWanted");
constexpr QLatin1String pathKey("loginRegisteredPath");
constexpr QLatin1String startKey("lastSystemStart");

constexpr std::chrono::milliseconds startUpTime = 300s;

} // namespace

bool isAutomaticStart(const QStringList &arguments, std::chrono::milliseconds uptime)
{
    return arguments.contains(automaticStartArgument) || uptime < startUpTime;
}

LaunchAtLogin::LaunchAtLogin(LoginItem &item, UserDefaults &defaults, Clock &clock, QString bundlePath, QObject *parent)
    : QObject(parent)
    , m_item(item)
    , m_defaults(defaults)
    , m_clock(clock)
    , m_bundlePath(std::move(bundlePath))
    , m_lastSystemStart(defaults.date(startKey))
{
    refreshLoginState();
}

void LaunchAtLogin::refreshLoginState()
{
    const LoginItemStatus status = m_item.status();
    const bool enabled = status == LoginItemStatus::Enabled;
    const bool needsApproval = status == LoginItemStatus::RequiresApproval;
    const bool enabledChanged = std::exchange(m_launchAtLogin, enabled) != enabled;
    const bool approvalChanged = std::exchange(m_loginNeedsApproval, needsApproval) != needsApproval;
    if (enabledChanged)
        Q_EMIT launchAtLoginChanged();
    if (approvalChanged)
        Q_EMIT loginNeedsApprovalChanged();
}

void LaunchAtLogin::setLaunchAtLogin(bool on)
{
    if (const std::optional<QString> refusal = on ? m_item.registerItem() : m_item.unregisterItem())
        Q_EMIT logged(QStringLiteral("\nLogin item: ") + *refusal);
    m_defaults.setBoolean(wantedKey, on);
    if (on)
        m_defaults.setString(pathKey, m_bundlePath);
    refreshLoginState();
}

void LaunchAtLogin::reRegisterLogin()
{
    (void)m_item.unregisterItem();
    if (const std::optional<QString> refusal = m_item.registerItem()) {
        Q_EMIT notice(QStringLiteral("تعذرت إعادة التسجيل: ") + *refusal);
    } else {
        m_defaults.setBoolean(wantedKey, true);
        m_defaults.setString(pathKey, m_bundlePath);
        Q_EMIT notice(QStringLiteral("أُعيد تسجيل التشغيل عند الدخول"));
    }
    refreshLoginState();
}

void LaunchAtLogin::healLoginItemIfNeeded()
{
    const bool sound = m_item.status() == LoginItemStatus::Enabled && !m_defaults.string(pathKey).isNull()
        && m_defaults.string(pathKey) == m_bundlePath;
    if (m_defaults.boolean(wantedKey) && !sound) {
        (void)m_item.unregisterItem();
        if (const std::optional<QString> refusal = m_item.registerItem())
            Q_EMIT logged(QStringLiteral("\nLogin item re-register: ") + *refusal);
        else
            m_defaults.setString(pathKey, m_bundlePath);
    }
    refreshLoginState();
}

void LaunchAtLogin::recordSystemStart()
{
    m_lastSystemStart = QDateTime::fromMSecsSinceEpoch(m_clock.wallTime());
    m_defaults.setDate(startKey, m_lastSystemStart);
    Q_EMIT lastSystemStartChanged();
}

} // namespace zemrak
