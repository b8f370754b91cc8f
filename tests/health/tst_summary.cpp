#include "health/healthsummary.h"
#include "health/vocabulary.h"
#include "support/testmain.h"

#include <QTest>

using namespace zemrak;

namespace {

PrinterInfo printer(const char *state, const char *reason = nullptr)
{
    PrinterInfo info{.id = QStringLiteral("p"),
        .name = QStringLiteral("Bar"),
        .type = QStringLiteral("net"),
        .state = QString::fromLatin1(state)};
    if (reason != nullptr)
        info.reason = QString::fromLatin1(reason);
    return info;
}

HealthSummary summaryOf(const QList<PrinterInfo> &printers)
{
    AgentState state;
    state.printers = printers;
    return summarise(&state, true); // a conflict is of no account while a snapshot is held
}

} // namespace

class SummaryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void labels()
    {
        using Labels = std::initializer_list<std::tuple<const char *, const char *, Tone>>;
        for (const auto &[code, text, tone] : Labels{{"ready", "جاهزة", Tone::Green}, {"busy", "مشغولة", Tone::Amber},
                 {"offline", "غير متصلة", Tone::Red}, {"error", "بها مشكلة", Tone::Red},
                 {"Ready", "غير معروفة", Tone::Muted}})
            QCOMPARE(stateInfo(QString::fromLatin1(code)), (Label{QString::fromUtf8(text), tone}));
        for (const auto &[code, text, tone] : Labels{{"completed", "تمت", Tone::Green}, {"failed", "فشلت", Tone::Red},
                 {"cancelled", "أُلغيت", Tone::Muted}, {"printing", "تُطبع", Tone::Amber},
                 {"waiting", "بانتظار الطابعة", Tone::Amber}, {"queued", "قيد الإرسال", Tone::Amber}})
            QCOMPARE(jobLabel(QString::fromLatin1(code)), (Label{QString::fromUtf8(text), tone}));
        using Texts = std::initializer_list<std::pair<const char *, const char *>>;
        QCOMPARE(reasonLabel(std::nullopt), QStringLiteral("غير متصلة"));
        for (const auto &[code, text] : Texts{{"not_connected", "غير موصولة بالجهاز"},
                 {"unreachable", "لا تستجيب على الشبكة"}, {"no_route", "لا مسار للشبكة (راجع إذن الشبكة المحلية)"},
                 {"device_missing", "الجهاز غير موجود"}, {" unreachable", "غير متصلة"}})
            QCOMPARE(reasonLabel(QString::fromLatin1(code)), QString::fromUtf8(text));
        for (const auto &[code, text] :
            Texts{{"cups", "طابعة النظام"}, {"net", "طابعة شبكة"}, {"serial", "بلوتوث / تسلسلي"}})
            QCOMPARE(typeLabel(QString::fromLatin1(code)), QString::fromUtf8(text));
    }

    void withoutSnapshot()
    {
        const HealthSummary taken = summarise(nullptr, true);
        QCOMPARE(taken.headline, QStringLiteral("المنفذ مشغول"));
        QVERIFY(taken.problems.value(0).startsWith(QStringLiteral("المنفذ 17731 تستخدمه عملية أخرى")));
        const HealthSummary down = summarise(nullptr, false);
        QCOMPARE(down.headline, QStringLiteral("الخدمة متوقفة"));
        QVERIFY(down.problems.value(0).endsWith(QStringLiteral("جرّب «إعادة تشغيل الخدمة».")));
        QVERIFY(!taken.ok && !down.ok && taken.connected == 0 && down.connected == 0);
    }

    void ofPrinters()
    {
        PrinterInfo named = printer("offline", "no_route");
        named.profile = Profile{.alias = QStringLiteral("كاشير 1")};
        PrinterInfo unnamed = printer("offline", "unreachable");
        unnamed.profile = Profile{};
        const QString fine = QStringLiteral("كل شيء يعمل");
        const QString trouble = QStringLiteral("مشكلة في طابعة");
        const std::pair<QList<PrinterInfo>, HealthSummary> rows[]
            = {{{},
                   {false, QStringLiteral("لا توجد طابعة"),
                       {QStringLiteral("لم يتم العثور على أي طابعة: وصّل الطابعة أو أضفها من البرنامج.")}, 0}},
                {{printer("ready"), printer("busy")}, {true, fine, {}, 2}},
                {{printer("Ready"), printer("")}, {true, fine, {}, 0}}, // unknown states
                {{printer("error")},
                    {false, trouble, {QStringLiteral("Bar: بها مشكلة (ورق منتهٍ أو غطاء مفتوح أو خطأ في الطابعة)")}, 1}},
                {{printer("offline")},
                    {false, QStringLiteral("لا توجد طابعة متصلة"), {QStringLiteral("Bar: غير متصلة")}, 0}},
                {{printer("ready"), named, unnamed},
                    {false, trouble,
                        {QStringLiteral("كاشير 1: لا مسار للشبكة (راجع إذن الشبكة المحلية)"),
                            QStringLiteral("Bar: لا تستجيب على الشبكة")},
                        1}}};
        for (const auto &[printers, expected] : rows)
            QCOMPARE(summaryOf(printers), expected);
    }

    void emptyAliasIsUsedAsItIs()
    {
        PrinterInfo info = printer("ready");
        info.profile = Profile{.alias = QString()};
        QCOMPARE(displayName(info), QString());
    }
};

ZEMRAK_TEST(summary, SummaryTest, QCoreApplication)
#include "tst_summary.moc"
