#include "health/vocabulary.h"

#include <QHash>
#include <QLatin1String>

namespace zemrak {

Label stateInfo(const QString &printerState)
{
    if (printerState == QLatin1String("ready"))
        return {QStringLiteral("جاهزة"), Tone::Green};
    if (printerState == QLatin1String("busy"))
        return {QStringLiteral("مشغولة"), Tone::Amber};
    if (printerState == QLatin1String("offline"))
        return {QStringLiteral("غير متصلة"), Tone::Red};
    if (printerState == QLatin1String("error"))
        return {QStringLiteral("بها مشكلة"), Tone::Red};
    return {QStringLiteral("غير معروفة"), Tone::Muted};
}

Label jobLabel(const QString &jobStatus)
{
    if (jobStatus == QLatin1String("completed"))
        return {QStringLiteral("تمت"), Tone::Green};
    if (jobStatus == QLatin1String("failed"))
        return {QStringLiteral("فشلت"), Tone::Red};
    if (jobStatus == QLatin1String("cancelled"))
        return {QStringLiteral("أُلغيت"), Tone::Muted};
    if (jobStatus == QLatin1String("printing"))
        return {QStringLiteral("تُطبع"), Tone::Amber};
    if (jobStatus == QLatin1String("waiting"))
        return {QStringLiteral("بانتظار الطابعة"), Tone::Amber};
    return {QStringLiteral("قيد الإرسال"), Tone::Amber};
}

QString reasonLabel(const std::optional<QString> &reason)
{
    if (reason == QLatin1String("not_connected"))
        return QStringLiteral("غير موصولة بالجهاز");
    if (reason == QLatin1String("unreachable"))
        return QStringLiteral("لا تستجيب على الشبكة");
    if (reason == QLatin1String("no_route"))
        return QStringLiteral("لا مسار للشبكة (راجع إذن الشبكة المحلية)");
    if (reason == QLatin1String("device_missing"))
        return QStringLiteral("الجهاز غير موجود");
    return QStringLiteral("غير متصلة");
}

QString hindranceText(const QString &code)
{
    static const QHash<QString, QString> texts{
        {QStringLiteral("offline"), QStringLiteral("الطابعة غير متصلة. تحقق من الكهرباء والكابل والشبكة.")},
        {QStringLiteral("busy"), QStringLiteral("الطابعة لا تجيب الآن، ولعلها تطبع لجهاز آخر.")},
        {QStringLiteral("scheduler_stopped"), QStringLiteral("خدمة الطباعة في النظام متوقفة.")},
        {QStringLiteral("cover_open"), QStringLiteral("غطاء الطابعة مفتوح. أغلقه جيدًا.")},
        {QStringLiteral("paper_out"), QStringLiteral("انتهى ورق الطابعة. ضع لفة جديدة وأغلق الغطاء.")},
        {QStringLiteral("cutter_error"),
            QStringLiteral("قاطع الورق عالق. أزل الورق العالق عنده ثم أعد تشغيل الطابعة.")},
        {QStringLiteral("printer_error"), QStringLiteral("في الطابعة خطأ. أطفئها ثم شغّلها.")},
        {QStringLiteral("offline_button"), QStringLiteral("الطابعة موقوفة من زرها. اضغط زر التشغيل عليها.")},
        {QStringLiteral("jam"), QStringLiteral("الورق عالق في الطابعة. أزله ثم أغلقها.")},
        {QStringLiteral("paused"), QStringLiteral("طابور الطابعة موقوف مؤقتًا. استأنفه من إعدادات النظام.")},
        {QStringLiteral("not_reading"), QStringLiteral("الطابعة لا تستقبل البيانات. تحقق من الورق والغطاء.")},
    };
    return texts.value(code, QStringLiteral("الطابعة غير مستعدة للطباعة (%1).").arg(code));
}

QString typeLabel(const QString &printerType)
{
    if (printerType == QLatin1String("cups"))
        return QStringLiteral("طابعة النظام");
    if (printerType == QLatin1String("net"))
        return QStringLiteral("طابعة شبكة");
    return QStringLiteral("بلوتوث / تسلسلي");
}

bool isConnected(const PrinterInfo &printer)
{
    return printer.state == QLatin1String("ready") || printer.state == QLatin1String("busy")
        || printer.state == QLatin1String("error");
}

QString displayName(const PrinterInfo &printer)
{
    return printer.profile ? printer.profile->alias.value_or(printer.name) : printer.name;
}

} // namespace zemrak
