#include "health/alerts.h"

#include <algorithm>

namespace zemrak {

namespace {

constexpr qint64 graceMs = 10'000;

AlertItem critical(
    const ServiceSilence &silence, const QString &id, const QString &key, const QString &title, const QString &message)
{
    return {.id = id,
        .key = key,
        .severity = QStringLiteral("critical"),
        .title = title,
        .message = message,
        .action = QStringLiteral("settings"),
        .createdAt = static_cast<double>(silence.now),
        .lastAt = static_cast<double>(silence.now),
        .count = 1,
        .read = false};
}

} // namespace

std::optional<AlertItem> localAlert(const ServiceSilence &silence)
{
    if (silence.answers)
        return std::nullopt;
    if (silence.portConflict)
        return critical(silence, QStringLiteral("local-port"), QStringLiteral("local:port_in_use"),
            QStringLiteral("المنفذ مشغول"),
            QStringLiteral("المنفذ 17731 تستخدمه عملية أخرى (غالبًا نسخة أخرى لمستخدم آخر مسجَّل). أغلقها ثم أعد "
                           "تشغيل الخدمة."));
    if (silence.silentFor <= graceMs)
        return std::nullopt;
    return critical(silence, QStringLiteral("local-down"), QStringLiteral("local:service_down"),
        QStringLiteral("الخدمة المحلية متوقفة"),
        QStringLiteral("لا يمكن استقبال أوامر الطباعة الآن. جرّب «إعادة تشغيل الخدمة» من الإعدادات."));
}

qint64 alertsBadge(const std::optional<AlertItem> &local, const QList<AlertItem> &alerts)
{
    return (local ? 1 : 0)
        + std::count_if(alerts.cbegin(), alerts.cend(), [](const AlertItem &alert) { return !alert.read; });
}

} // namespace zemrak
