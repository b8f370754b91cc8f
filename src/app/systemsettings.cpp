#include "app/systemsettings.h"

namespace zemrak {

void SystemSettings::open(Desktop::SettingsPane pane)
{
    if (!m_desktop.openSettings(pane))
        m_toast.flash(QStringLiteral("تعذر فتح إعدادات النظام، افتحها من قائمة البرامج"));
}

} // namespace zemrak
