#include "health/healthsummary.h"

#include "health/vocabulary.h"

#include <algorithm>

namespace zemrak {

namespace {

HealthSummary problem(const QString &headline, const QString &line)
{
    return {.ok = false, .headline = headline, .problems = {line}};
}

QList<QString> problemLines(const QList<PrinterInfo> &printers)
{
    QList<QString> lines;
    for (const PrinterInfo &printer : printers) {
        if (printer.state == QLatin1String("offline"))
            lines.append(displayName(printer) + QStringLiteral(": ") + reasonLabel(printer.reason));
        else if (printer.state == QLatin1String("error"))
            lines.append(
                displayName(printer) + QStringLiteral(": بها مشكلة (ورق منتهٍ أو غطاء مفتوح أو خطأ في الطابعة)"));
    }
    return lines;
}

} // namespace

HealthSummary summarise(const AgentState *state, bool portConflict)
{
    if (state == nullptr && portConflict)
        return problem(QStringLiteral("المنفذ مشغول"),
            QStringLiteral("المنفذ 17731 تستخدمه عملية أخرى، غالبًا نسخة أخرى من Zemrak Printer لمستخدم آخر مسجَّل على "
                           "هذا الجهاز. أغلقها (أو سجّل خروج المستخدم الآخر) ثم أعد تشغيل الخدمة."));
    if (state == nullptr)
        return problem(QStringLiteral("الخدمة متوقفة"),
            QStringLiteral("الخدمة المحلية لا تستجيب (لا يمكن استقبال أوامر الطباعة). جرّب «إعادة تشغيل الخدمة»."));
    if (state->printers.isEmpty())
        return problem(QStringLiteral("لا توجد طابعة"),
            QStringLiteral("لم يتم العثور على أي طابعة: وصّل الطابعة أو أضفها من البرنامج."));

    const QList<QString> lines = problemLines(state->printers);
    const qint64 connected = std::count_if(state->printers.cbegin(), state->printers.cend(), isConnected);
    if (lines.isEmpty())
        return {.ok = true, .headline = QStringLiteral("كل شيء يعمل"), .problems = {}, .connected = connected};
    return {.ok = false,
        .headline = connected > 0 ? QStringLiteral("مشكلة في طابعة") : QStringLiteral("لا توجد طابعة متصلة"),
        .problems = lines,
        .connected = connected};
}

} // namespace zemrak
