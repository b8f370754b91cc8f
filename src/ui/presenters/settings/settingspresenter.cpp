#include "ui/presenters/settings/settingspresenter.h"

#include "ui/presenters/settings/loginstatus.h"

#include <utility>

namespace zemrak {

SettingsPresenter::SettingsPresenter(const SettingsParts &parts, QString version, QObject *parent)
    : QObject(parent)
    , m_parts(parts)
    , m_version(std::move(version))
{
}

void SettingsPresenter::show(const SettingsFacts &facts)
{
    Shown shown{.loginStatus
        = zemrak::loginStatus(facts.loginNeedsApproval, facts.launchAtLogin, facts.lastSystemStart, facts.now),
        .availableUpdate = facts.availableUpdate,
        .notifications = facts.notifications,
        .launchAtLogin = facts.launchAtLogin,
        .loginNeedsApproval = facts.loginNeedsApproval,
        .keepAwake = facts.keepAwake,
        .autoApprove = facts.state != nullptr && facts.state->autoApprovePairing,
        .serviceAnswers = facts.state != nullptr,
        .caTrusted = facts.caTrusted,
        .updating = facts.updating};
    if (std::exchange(m_shown, shown) != shown)
        Q_EMIT changed();
}

bool SettingsPresenter::offersNotificationRequest() const
{
    return m_shown.notifications == NotificationStatus::NotDetermined;
}

bool SettingsPresenter::offersNotificationSettings() const
{
    return m_shown.notifications == NotificationStatus::Denied;
}

bool SettingsPresenter::offersNotificationTest() const
{
    return !offersNotificationRequest() && !offersNotificationSettings();
}

QString SettingsPresenter::notificationStatus() const
{
    if (offersNotificationRequest())
        return QStringLiteral("غير مفعّلة بعد");
    if (offersNotificationSettings())
        return QStringLiteral("مرفوضة: فعّلها من إعدادات النظام لتصلك التحذيرات");
    return QStringLiteral("مفعّلة ✓ ستصلك تحذيرات الطباعة");
}

QString SettingsPresenter::trustStatus() const
{
    return m_shown.caTrusted ? QStringLiteral("مفعّل على هذا الجهاز ✓ (لا يلزم تكراره)")
                             : QStringLiteral("لمتصفح Safari فقط؛ Chrome وEdge وFirefox لا يحتاجونه");
}

QString SettingsPresenter::versionTitle() const
{
    return QStringLiteral("الإصدار الحالي ") + m_version;
}

QString SettingsPresenter::updateStatus() const
{
    return offersInstall() ? QStringLiteral("يتوفر الإصدار ") + m_shown.availableUpdate
            + QStringLiteral("؛ التحديث موقَّع ويتراجع تلقائيًا إن لم يعمل")
                           : QString();
}

} // namespace zemrak
