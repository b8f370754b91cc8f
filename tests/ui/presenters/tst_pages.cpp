// The overview and the page of settings, by the facts they are shown.
#include "ui/presenters/overview/overviewpresenter.h"
#include "ui/presenters/presentertest.h"
#include "ui/presenters/settings/loginstatus.h"
#include "ui/presenters/settings/settingspresenter.h"

using namespace zemrak;
using namespace zemrak::test;
using namespace Qt::StringLiterals;

class PagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hero()
    {
        // The states of the printers, which are called P0, P1, ...; what else holds; colour, title, subtitle, counter.
        for (const QStringList &row : rowsOf(R"(
                | stopped | gRed | الخدمة متوقفة | اضغط «إعادة التشغيل» من الإعدادات. | 0/0
                | stopped scanning | #c084fc | خطوة | جارٍ فحص الاتصال الفعلي بكل طابعة… | 0/0
                | | gAmber | لم يتم العثور على طابعات | وصّل الطابعة أو أضفها من صفحة الطابعات، ثم اضغط فحص الاتصال. | 0/0
                odd offline | | gAmber | لا توجد طابعة متصلة | «<P0>» غير موصولة أو مطفأة. وصّل الكابل أو شغّلها ثم اضغط فحص الاتصال. | 0/2
                offline error | | gGreen | كل شيء جاهز للطباعة | طابعة واحدة متصلة وتستقبل أوامر الطباعة من Zemrak مباشرة على هذا الجهاز. | 1/2
                ready busy offline ready | | gGreen | كل شيء جاهز للطباعة | 3 طابعات متصلة وتستقبل أوامر الطباعة من Zemrak مباشرة على هذا الجهاز. | 3/4)")) {
            AgentState state;
            for (const QString &printerState : row[0].split(u' ', Qt::SkipEmptyParts))
                state.printers.append({.name = u"P%1"_s.arg(state.printers.size()),
                    .state = printerState,
                    .profile = Profile{.alias = u"لقب"_s}});
            OverviewPresenter page;
            QSignalSpy changed(&page, &OverviewPresenter::changed);
            for (int again = 0; again < 2; ++again) {
                page.show({.state = row[1].contains(u"stopped") ? nullptr : &state,
                    .scanning = row[1].contains(u"scanning"),
                    .scanStep = u"خطوة"_s});
                QCOMPARE(changed.size(), 1);
            }
            QString shown = (QStringList{page.heroColor(), page.heroTitle(), page.heroSubtitle(), page.printersValue()})
                                .join(u'|');
            QCOMPARE(shown.replace(QChar(0x2068), u'<').replace(QChar(0x2069), u'>'), row.mid(2).join(u'|'));
        }
    }

    void jobsOfToday()
    {
        const auto local = [](int day, int hour, int minute) {
            return QDateTime(QDate(2024, 3, day), QTime(hour, minute)).toMSecsSinceEpoch();
        };
        AgentState state;
        for (const qint64 at : {local(9, 23, 59), local(10, 0, 0), local(10, 23, 59), local(11, 0, 0)})
            state.recentJobs.append(JobInfo{.updatedAt = double(at)});
        QCOMPARE(zemrak::jobsToday(&state, local(10, 12, 0)), 2);
        QCOMPARE(zemrak::jobsToday(&state, local(11, 0, 1)), 1); // the day turns while the page is open
        QCOMPARE(zemrak::jobsToday(nullptr, local(10, 12, 0)), 0);
    }

    void scanResults()
    {
        OverviewPresenter page;
        const auto told = [&page](const OverviewFacts &facts) {
            page.show(facts);
            return page.scanMessage();
        };
        QCOMPARE(told({.scanning = true}), u"جارٍ البحث عن الطابعات…"_s);
        QCOMPARE(page.ringHoverHint(), u"جارٍ الفحص…"_s);
        QCOMPARE(told({.scanResult = ScanResult{}}), u"لا توجد طابعات للفحص"_s);
        QCOMPARE(page.ringHoverHint(), u"اضغط لفحص الاتصال"_s);
        ScanResult result;
        result.printers = {{u"a"_s, u"A"_s, u"ready"_s, {}}, {u"b"_s, u"B"_s, u"offline"_s, u"no_route"_s}};
        QCOMPARE(told({.scanResult = result}), QString());
        QCOMPARE(cells(*page.scanResults(), 0, "icon reason"), u"checkmark.circle.fill|"_s);
        QCOMPARE(cells(*page.scanResults(), 1, "icon reason"),
            u"xmark.circle.fill|لا مسار للشبكة (راجع إذن الشبكة المحلية)"_s);
        QVERIFY(told({}).isEmpty() && page.scanResults()->count() == 0 && !page.showsScan());
        QVERIFY(told({.scanStep = u"اكتمل الفحص"_s}).startsWith(u"لم تصل نتيجة"_s)); // the service has not answered
        QVERIFY(page.showsScan());
    }

    void loginLine()
    {
        const QDateTime proof = QDateTime::fromMSecsSinceEpoch(1'700'000'000'000);
        const qint64 now = proof.addSecs(7200).toMSecsSinceEpoch();
        QVERIFY(loginStatus(true, false, proof, now).startsWith(u"بانتظار موافقتك:"_s));
        QVERIFY(loginStatus(false, false, proof, now).startsWith(u"غير مفعّل:"_s));
        QVERIFY(loginStatus(false, true, {}, now).endsWith(u"وسيظهر هنا الدليل"_s));
        QCOMPARE(loginStatus(false, true, proof, now), u"مفعّل في النظام ✓ وثبت عمله: آخر تشغيل تلقائي قبل ساعتين"_s);
    }

    void settings()
    {
        Parts app;
        SettingsPresenter page({app.login, app.notifications, app.awake, app.commands, app.trust, app.supervisor,
                                   app.diagnostics, app.updates, app.systemSettings},
            u"1.2.3"_s);
        QSignalSpy changed(&page, &SettingsPresenter::changed);
        SettingsFacts facts;
        page.show(facts);
        QCOMPARE(page.versionTitle(), u"الإصدار الحالي 1.2.3"_s);
        QCOMPARE(page.notificationStatus(), u"غير مفعّلة بعد"_s);
        QVERIFY(page.offersNotificationRequest() && !page.offersNotificationTest() && !page.offersInstall()
            && page.updateStatus().isEmpty() && !page.offersLoginSettings());
        const AgentState state{.autoApprovePairing = true};
        facts = {.loginNeedsApproval = true,
            .notifications = NotificationStatus::Denied,
            .state = &state,
            .caTrusted = true,
            .availableUpdate = u"2.0"_s};
        page.show(facts);
        QCOMPARE(page.updateStatus(), u"يتوفر الإصدار 2.0؛ التحديث موقَّع ويتراجع تلقائيًا إن لم يعمل"_s);
        QVERIFY(page.offersLoginSettings() && page.offersNotificationSettings() && page.autoApprove()
            && page.offersInstall());
        QCOMPARE(page.trustStatus(), u"مفعّل على هذا الجهاز ✓ (لا يلزم تكراره)"_s);
        QCOMPARE(changed.size(), 2);
        facts.notifications = NotificationStatus::Provisional; // they reach the person
        for (int again = 0; again < 2; ++again)
            page.show(facts);
        QVERIFY(page.offersNotificationTest() && changed.size() == 3);
    }
};

ZEMRAK_TEST(pages, PagesTest, QCoreApplication)
#include "tst_pages.moc"
