#include "app/loginitemcommand.h"

#include "app/agent.h"

namespace zemrak {

QString setLoginItem(const QString &value, Agent &agent, const LoginItem &item)
{
    if (value == QLatin1String("on"))
        agent.setLaunchAtLogin(true);
    else if (value == QLatin1String("off"))
        agent.setLaunchAtLogin(false);
    return QStringLiteral("login-item-status: %1 (0 notRegistered, 1 enabled, 2 requiresApproval, 3 notFound)")
        .arg(static_cast<int>(item.status()));
}

} // namespace zemrak
