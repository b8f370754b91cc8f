#include "health/statusbarcontroller.h"

#include "health/statusicon.h"

namespace zemrak {

StatusBarController::StatusBarController(StatusItem &item, const QImage &logo, QObject *parent)
    : QObject(parent)
    , m_item(item)
    , m_logo(logo)
{
    m_item.onCommand([this](StatusCommand command) { Q_EMIT commandChosen(command); });
}

StatusBarController::~StatusBarController()
{
    m_item.onCommand({});
}

void StatusBarController::update(const HealthSummary &health, bool launchAtLogin, bool loginNeedsApproval)
{
    const StatusContent content = statusContent(health, launchAtLogin, loginNeedsApproval);
    if (m_shown == content)
        return;
    m_shown = content;
    m_item.show(icon(content.problem), content);
}

const QIcon &StatusBarController::icon(bool problem)
{
    QIcon &icon = m_icons.at(problem ? 1 : 0);
    if (icon.isNull())
        icon = statusIcon(m_logo, problem);
    return icon;
}

} // namespace zemrak
