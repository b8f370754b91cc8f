#include "support/application.h"
#include "support/testmain.h"
#include "ui/presenters/overview/overviewpresenter.h"
#include "ui/presenters/settings/loginstatus.h"
#include "ui/presenters/settings/settingspresenter.h"

#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

PrinterInfo printer(const char *name, const char *state)
{
    return {.id = QString::fromLatin1(name),
        .name = QString::fromLatin1(name),
        .state = QString::fromLatin1(state),
        .profile = Profile{.alias = QStringLiteral("لقب")}};
}

qint64 localTime(int day, int hour, int minute)
{
    return QDateTime(QDate(2024, 3, day), QTime(hour, minute)).toMSecsSinceEpoch();
}

} // namespace

class PagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hero_data()
    {
        QTest::addColumn<QList<PrinterInfo>>("printers");
        QTest::addColumn<bool>("answers");
        QTest::addColumn<bool>("scanning");
        QTest::addColumn<QStringList>("shown"); // colour, title, subtitle, first counter
        const auto row
            = [](const char *name, const QList<PrinterInfo> &printers, bool answers, bool scanning,
                  const QStringList &shown) { QTest::newRow(name) << printers << answers << scanning << shown; };
        row("stopped", {}, false, false,
            {QStringLiteral("gRed"), QStringLiteral("الخدمة متوقفة"),
                QStringLiteral("اضغط «إعادة التشغيل» من الإعدادات."), QStringLiteral("0/0")});
        row("stopped, being checked", {}, false, true,
            {QStringLiteral("#c084fc"), QStringLiteral("خطوة"), QStringLiteral("جارٍ فحص الاتصال الفعلي بكل طابعة…"),
                QStringLiteral("0/0")});
        row("no printer", {}, true, false,
            {QStringLiteral("gAmber"), QStringLiteral("لم يتم العثور على طابعات"),
                QStringLiteral("وصّل الطابعة أو أضفها من صفحة الطابعات، ثم اضغط فحص الاتصال."), QStringLiteral("0/0")});
        // The first of the list by its own name, whichever is offline.
        row("none connected", {printer("Odd", "odd"), printer("Off", "offline")}, true, false,
            {QStringLiteral("gAmber"), QStringLiteral("لا توجد طابعة متصلة"),
                QStringLiteral("«\u2068Odd\u2069» غير موصولة أو مطفأة. وصّل الكابل أو شغّلها ثم اضغط فحص الاتصال."),
                QStringLiteral("0/2")});
        row("one connected", {printer("a", "offline"), printer("b", "error")}, true, false,
            {QStringLiteral("gGreen"), QStringLiteral("كل شيء جاهز للطباعة"),
                QStringLiteral("طابعة واحدة متصلة وتستقبل أوامر الطباعة من Zemrak مباشرة على هذا الجهاز."),
                QStringLiteral("1/2")});
        row("three of four",
            {printer("a", "ready"), printer("b", "busy"), printer("c", "offline"), printer("d", "ready")}, true, false,
            {QStringLiteral("gGreen"), QStringLiteral("كل شيء جاهز للطباعة"),
                QStringLiteral("3 طابعات متصلة وتستقبل أوامر الطباعة من Zemrak مباشرة على هذا الجهاز."),
                QStringLiteral("3/4")});
    }
    void hero()
    {
        QFETCH(QList<PrinterInfo>, printers);
        QFETCH(bool, answers);
        QFETCH(bool, scanning);
        QFETCH(QStringList, shown);
        AgentState state;
        state.printers = printers;
        const OverviewFacts facts{
            .state = answers ? &state : nullptr, .scanning = scanning, .scanStep = QStringLiteral("خطوة")};
        OverviewPresenter page;
        QSignalSpy changed(&page, &OverviewPresenter::changed);
        page.show(facts);
        QCOMPARE((QStringList{page.heroColor(), page.heroTitle(), page.heroSubtitle(), page.printersValue()}), shown);
        QCOMPARE(changed.size(), 1);
        page.show(facts);
        QCOMPARE(changed.size(), 1);
    }

    void jobsOfToday()
    {
        AgentState state;
        for (const qint64 at : {localTime(9, 23, 59), localTime(10, 0, 0), localTime(10, 23, 59), localTime(11, 0, 0)})
            state.recentJobs.append({.id = QString::number(at), .updatedAt = double(at)});
        QCOMPARE(jobsToday(&state, localTime(10, 12, 0)), 2);
        QCOMPARE(jobsToday(&state, localTime(11, 0, 1)), 1); // the day turns while the page is open
        QCOMPARE(jobsToday(nullptr, localTime(10, 12, 0)), 0);
    }

    void scanResults()
    {
        OverviewPresenter page;
        OverviewFacts facts{.scanning = true};
        page.show(facts);
        QCOMPARE(page.scanMessage(), QStringLiteral("جارٍ البحث عن الطابعات…"));
        QCOMPARE(page.ringHoverHint(), QStringLiteral("جارٍ الفحص…"));
        facts = {.scanResult = ScanResult{}};
        page.show(facts);
        QCOMPARE(page.scanMessage(), QStringLiteral("لا توجد طابعات للفحص"));
        QCOMPARE(page.ringHoverHint(), QStringLiteral("اضغط لفحص الاتصال"));
        facts.scanResult->printers = {{QStringLiteral("a"), QStringLiteral("A"), QStringLiteral("ready"), {}},
            {QStringLiteral("b"), QStringLiteral("B"), QStringLiteral("offline"), QStringLiteral("no_route")}};
        page.show(facts);
        QCOMPARE(page.scanMessage(), QString());
        const ScanResultModel &lines = *page.scanResults();
        QCOMPARE(lines.index(0).data(ScanResultModel::IconRole).toString(), QStringLiteral("checkmark.circle.fill"));
        QCOMPARE(lines.index(0).data(ScanResultModel::ReasonRole).toString(), QString());
        QCOMPARE(lines.index(1).data(ScanResultModel::IconRole).toString(), QStringLiteral("xmark.circle.fill"));
        QCOMPARE(lines.index(1).data(ScanResultModel::ReasonRole).toString(),
            QStringLiteral("لا مسار للشبكة (راجع إذن الشبكة المحلية)"));
        page.show({});
        QVERIFY(page.scanMessage().isEmpty() && page.scanResults()->count() == 0 && !page.showsScan());
        page.show({.scanStep = QStringLiteral("اكتمل الفحص")}); // and the service has not answered
        QVERIFY(page.scanMessage().startsWith(QStringLiteral("لم تصل نتيجة")) && page.showsScan());
    }

    void loginLine()
    {
        const QDateTime proof = QDateTime::fromMSecsSinceEpoch(1'700'000'000'000);
        const qint64 now = proof.addSecs(7200).toMSecsSinceEpoch();
        QVERIFY(loginStatus(true, false, proof, now).startsWith(QStringLiteral("بانتظار موافقتك:")));
        QVERIFY(loginStatus(false, false, proof, now).startsWith(QStringLiteral("غير مفعّل:")));
        QVERIFY(loginStatus(false, true, {}, now).endsWith(QStringLiteral("وسيظهر هنا الدليل")));
        QCOMPARE(loginStatus(false, true, proof, now),
            QStringLiteral("مفعّل في النظام ✓ وثبت عمله: آخر تشغيل تلقائي قبل ساعتين"));
    }

    void settings()
    {
        Application app;
        Agent &agent = app.agent;
        SettingsPresenter page(
            {agent.loginLaunch(), agent.notifications(), agent.awakeKeeper(), agent.commands(), agent.trust(),
                agent.supervisor(), agent.diagnostics(), agent.updates(), agent.systemSettings()},
            QStringLiteral("1.2.3"));
        QSignalSpy changed(&page, &SettingsPresenter::changed);
        SettingsFacts facts;
        page.show(facts);
        QCOMPARE(page.versionTitle(), QStringLiteral("الإصدار الحالي 1.2.3"));
        QCOMPARE(page.notificationStatus(), QStringLiteral("غير مفعّلة بعد"));
        QVERIFY(page.offersNotificationRequest() && !page.offersNotificationTest() && !page.offersInstall()
            && page.updateStatus().isEmpty() && !page.offersLoginSettings());
        QCOMPARE(changed.size(), 1);

        const AgentState state{.autoApprovePairing = true};
        facts = {.loginNeedsApproval = true,
            .notifications = NotificationStatus::Denied,
            .state = &state,
            .caTrusted = true,
            .availableUpdate = QStringLiteral("2.0")};
        page.show(facts);
        QCOMPARE(page.updateStatus(), QStringLiteral("يتوفر الإصدار 2.0؛ التحديث موقَّع ويتراجع تلقائيًا إن لم يعمل"));
        QVERIFY(page.offersLoginSettings() && page.offersNotificationSettings() && page.autoApprove()
            && page.offersInstall());
        QCOMPARE(page.trustStatus(), QStringLiteral("مفعّل على هذا الجهاز ✓ (لا يلزم تكراره)"));
        QCOMPARE(changed.size(), 2);
        facts.notifications = NotificationStatus::Provisional; // they reach the person
        page.show(facts);
        QVERIFY(page.offersNotificationTest());
        page.show(facts);
        QCOMPARE(changed.size(), 3);
    }
};

ZEMRAK_TEST(pages, PagesTest, QCoreApplication)
#include "tst_pages.moc"
