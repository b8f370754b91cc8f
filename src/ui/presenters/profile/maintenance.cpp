#include "ui/presenters/profile/maintenance.h"

namespace zemrak {

QList<Maintenance> maintenanceFor(const QString &printerType)
{
    QList<Maintenance> list{
        {QStringLiteral("drawer"), QStringLiteral("فتح الدرج"), QStringLiteral("أُرسل أمر فتح الدرج"), true},
        {QStringLiteral("cut"), QStringLiteral("قص تجريبي"), QStringLiteral("أُرسل أمر القص")},
        {QStringLiteral("codepage-test"), QStringLiteral("طباعة صفحات الأكواد"),
            QStringLiteral("جارٍ طباعة اختبار صفحات الأكواد")},
    };
    // Only a queue of the system can hold stuck jobs.
    if (printerType == QLatin1String("cups"))
        list.append({QStringLiteral("clear-queue"), QStringLiteral("مسح الوظائف العالقة"),
            QStringLiteral("تم مسح الوظائف العالقة"), false,
            QStringLiteral("تُلغى كل الوظائف التي تنتظر في طابور هذه الطابعة ولا تُطبع.")});
    return list;
}

} // namespace zemrak
