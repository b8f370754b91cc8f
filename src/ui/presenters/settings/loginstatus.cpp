#include "ui/presenters/settings/loginstatus.h"

#include "ui/presenters/text/relativetime.h"

namespace zemrak {

QString loginStatus(bool needsApproval, bool launchAtLogin, const QDateTime &lastSystemStart, qint64 now)
{
    if (needsApproval)
        return QStringLiteral("بانتظار موافقتك: إعدادات النظام ← عام ← عناصر تسجيل الدخول والإضافات");
    if (!launchAtLogin)
        return QStringLiteral("غير مفعّل: لن يبدأ البرنامج بعد إعادة تشغيل الجهاز");
    if (!lastSystemStart.isValid())
        return QStringLiteral("مفعّل في النظام. لم يثبت التشغيل التلقائي بعد: أعد تشغيل الجهاز مرة وسيظهر هنا الدليل");
    return QStringLiteral("مفعّل في النظام ✓ وثبت عمله: آخر تشغيل تلقائي ")
        + relativeTime(double(lastSystemStart.toMSecsSinceEpoch()), now);
}

} // namespace zemrak
