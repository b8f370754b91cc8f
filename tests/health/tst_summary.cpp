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
        QCOMPARE(stateInfo(QStringLiteral("ready")), (Label{QStringLiteral("جاهزة"), Tone::Green}));
        QCOMPARE(stateInfo(QStringLiteral("busy")), (Label{QStringLiteral("مشغولة"), Tone::Amber}));
        QCOMPARE(stateInfo(QStringLiteral("offline")), (Label{QStringLiteral("غير متصلة"), Tone::Red}));
        QCOMPARE(stateInfo(QStringLiteral("error")), (Label{QStringLiteral("بها مشكلة"), Tone::Red}));
        QCOMPARE(stateInfo(QStringLiteral("Ready")), (Label{QStringLiteral("غير معروفة"), Tone::Muted}));
        QCOMPARE(jobLabel(QStringLiteral("completed")), (Label{QStringLiteral("تمت"), Tone::Green}));
        QCOMPARE(jobLabel(QStringLiteral("failed")), (Label{QStringLiteral("فشلت"), Tone::Red}));
        QCOMPARE(jobLabel(QStringLiteral("cancelled")), (Label{QStringLiteral("أُلغيت"), Tone::Muted}));
        QCOMPARE(jobLabel(QStringLiteral("printing")), (Label{QStringLiteral("تُطبع"), Tone::Amber}));
        QCOMPARE(jobLabel(QStringLiteral("waiting")), (Label{QStringLiteral("بانتظار الطابعة"), Tone::Amber}));
        QCOMPARE(jobLabel(QStringLiteral("queued")), (Label{QStringLiteral("قيد الإرسال"), Tone::Amber}));
        QCOMPARE(reasonLabel(std::nullopt), QStringLiteral("غير متصلة"));
        QCOMPARE(reasonLabel(QStringLiteral("not_connected")), QStringLiteral("غير موصولة بالجهاز"));
        QCOMPARE(reasonLabel(QStringLiteral("unreachable")), QStringLiteral("لا تستجيب على الشبكة"));
        QCOMPARE(reasonLabel(QStringLiteral("no_route")), QStringLiteral("لا مسار للشبكة (راجع إذن الشبكة المحلية)"));
        QCOMPARE(reasonLabel(QStringLiteral("device_missing")), QStringLiteral("الجهاز غير موجود"));
        QCOMPARE(reasonLabel(QStringLiteral(" unreachable")), QStringLiteral("غير متصلة"));
        QCOMPARE(typeLabel(QStringLiteral("cups")), QStringLiteral("طابعة النظام"));
        QCOMPARE(typeLabel(QStringLiteral("net")), QStringLiteral("طابعة شبكة"));
        QCOMPARE(typeLabel(QStringLiteral("serial")), QStringLiteral("بلوتوث / تسلسلي"));
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

    void ofPrinters_data()
    {
        QTest::addColumn<QList<PrinterInfo>>("printers");
        QTest::addColumn<HealthSummary>("expected");
        const auto row = [](const char *name, const QList<PrinterInfo> &printers, const HealthSummary &expected) {
            QTest::newRow(name) << printers << expected;
        };
        row("none", {},
            {false, QStringLiteral("لا توجد طابعة"),
                {QStringLiteral("لم يتم العثور على أي طابعة: وصّل الطابعة أو أضفها من البرنامج.")}, 0});
        row("fine", {printer("ready"), printer("busy")}, {true, QStringLiteral("كل شيء يعمل"), {}, 2});
        row("unknown states only", {printer("Ready"), printer("")}, {true, QStringLiteral("كل شيء يعمل"), {}, 0});
        row("one in error", {printer("error")},
            {false, QStringLiteral("مشكلة في طابعة"),
                {QStringLiteral("Bar: بها مشكلة (ورق منتهٍ أو غطاء مفتوح أو خطأ في الطابعة)")}, 1});
        row("one offline", {printer("offline")},
            {false, QStringLiteral("لا توجد طابعة متصلة"), {QStringLiteral("Bar: غير متصلة")}, 0});
        PrinterInfo named = printer("offline", "no_route");
        named.profile = Profile{.alias = QStringLiteral("كاشير 1")};
        PrinterInfo unnamed = printer("offline", "unreachable");
        unnamed.profile = Profile{};
        row("in printer order", {printer("ready"), named, unnamed},
            {false, QStringLiteral("مشكلة في طابعة"),
                {QStringLiteral("كاشير 1: لا مسار للشبكة (راجع إذن الشبكة المحلية)"),
                    QStringLiteral("Bar: لا تستجيب على الشبكة")},
                1});
    }
    void ofPrinters()
    {
        QFETCH(QList<PrinterInfo>, printers);
        QFETCH(HealthSummary, expected);
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
