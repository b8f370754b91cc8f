// The sheets, worked as a person does: a printer's settings, adding one, the first-run wizard, the log; and the page of
// settings, which opens two of them.
#include "support/heldkey.h"
#include "support/rows.h"
#include "support/testmain.h"
#include "ui/window/windowtest.h"

#include <QPointer>
#include <QQmlComponent>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

QString lines(int first, int last)
{
    QString text;
    for (int i = first; i <= last; ++i)
        text += u"line %1\n"_s.arg(i);
    return text;
}

} // namespace

class SheetsTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void openingSavesNothing()
    {
        openProfile();
        m_clock.advance(5s);
        view().endEditing();
        m_window->close();
        const qsizetype before = sent("/admin/profile");
        enter("quiet"); // is asked after anything that was sent before
        QCOMPARE(before, 0);
    }

    void aChoiceIsSavedOnce()
    {
        openProfile();
        key(Qt::Key_Down, {}, 2);
        m_clock.advance(50ms);
        QTRY_COMPARE(sent("/admin/profile"), 1);
        QCOMPARE(saved("protocol"), u"starline"_s);
        m_clock.advance(5s);
        focus("عرض الطباعة");
        key(Qt::Key_Down);
        m_clock.advance(50ms);
        QTRY_COMPARE(sent("/admin/profile"), 2);
        QCOMPARE(saved("dots"), u"384"_s);
    }

    void leavingSavesWhatWasTyped_data()
    {
        QTest::addColumn<std::function<void()>>("leave");
        QTest::newRow("escape") << std::function<void()>([this] { key(Qt::Key_Escape); });
        QTest::newRow("cross") << std::function<void()>([this] { press("إغلاق"); });
        QTest::newRow("window") << std::function<void()>([this] { key(Qt::Key_W, Qt::ControlModifier); });
        QTest::newRow("frame") << std::function<void()>([this] { window()->close(); });
        QTest::newRow("request") << std::function<void()>([this] { agent().setRequestedPage(Page::Alerts); });
        QTest::newRow("the application's end") << std::function<void()>([this] { m_window->close(); });
    }
    void leavingSavesWhatWasTyped()
    {
        QFETCH(std::function<void()>, leave);
        openProfile();
        typeAlias();
        QCoreApplication::processEvents();
        QCOMPARE(sent("/admin/profile"), 0);
        leave();
        QTRY_COMPARE(sent("/admin/profile"), 1);
        QCOMPARE(saved("alias"), u"b"_s);
    }

    // While the service is slow to answer, what it told last is older than what the person changed last.
    void reopenedSheetHasWhatWasChanged()
    {
        openProfile();
        holdAnswers();
        typeAlias();
        key(Qt::Key_Escape);
        QTRY_COMPARE(sent("/admin/profile"), 1);
        openProfile(false);
        QCOMPARE(session().profile()->alias(), u"b"_s);
    }

    // Somebody clicks a notification while the window, on its way out, waits for a save to be answered.
    void windowAskedForWhileItClosesComesBack()
    {
        openProfile();
        holdAnswers();
        key(Qt::Key_Down);
        const QPointer<QQuickWindow> first = window();
        QTimer::singleShot(50ms, this, [this] {
            agent().setRequestedPage(Page::Alerts);
            m_window->show({});
            m_window->close();
            m_clock.advance(2s);
        });
        m_window->close();
        QVERIFY(!m_window->isOpen() && !first);
        QCOMPARE(sent("/admin/profile"), 1);
        QTRY_VERIFY(m_window->isOpen());
        QVERIFY(QTest::qWaitForWindowActive(window()));
        QCoreApplication::sendPostedEvents(); // what was left of the first must not close the second
        QVERIFY(m_window->isOpen() && window()->isVisible());
        QCOMPARE(view().page(), u"alerts"_s);
    }

    void escapeClosesTheTopmostAndGivesTheKeyboardBack()
    {
        openShop();
        focus("نظرة عامة");
        QQuickItem *before = focusItem();
        openProfile(false);
        const auto isOpen = [this] { return control("لغة الطابعة")->property("open").toBool(); };
        key(Qt::Key_Return);
        QTRY_VERIFY(isOpen());
        key(Qt::Key_Escape); // the list of choices
        QTRY_VERIFY(!isOpen());
        QCOMPARE(view().editing(), u"cups-kitchen"_s);
        key(Qt::Key_Escape);
        QTRY_COMPARE(view().editing(), QString());
        QTRY_COMPARE(focusItem(), before);
    }

    void anotherPrinterTakesTheSheetOver()
    {
        openProfile();
        key(Qt::Key_Down);
        view().edit(u"net-1"_s);
        QTRY_COMPARE(sent("/admin/profile"), 1);
        QTRY_COMPARE(focused(), u"لغة الطابعة"_s);
        QCOMPARE(control("اسم مستعار")->property("text").toString(), u"كاشير 1"_s);
        QVERIFY(!find("مسح الوظائف العالقة")); // not a queue of the system
    }

    void maintenanceIsSent()
    {
        openProfile();
        focus("درج النقد");
        key(Qt::Key_Down);
        press("فتح الدرج");
        isSent("/admin/printers/action", R"({"id":"cups-kitchen","action":"drawer","pin":"5"})");
        press("مسح الوظائف العالقة"); // what cannot be taken back is asked first
        QTRY_VERIFY(find("مسح"));
        QCOMPARE(sent("/admin/printers/action"), 1);
        press("مسح");
        isSent("/admin/printers/action", R"({"id":"cups-kitchen","action":"clear-queue"})");
    }

    void findsAndAdds()
    {
        openShop();
        view().setAdding(true);
        QTRY_COMPARE(focused(), u"شبكة (LAN / Wi-Fi)"_s);
        press("ابحث عن طابعات في الشبكة");
        const auto add = [this] { return itemWithText(itemOfType(root(), "AddPrinterHits"), u"إضافة"_s); };
        QTRY_VERIFY(add());
        press(add());
        isSent("/admin/printers/add",
            R"({"type":"net","name":"Network 10.0.0.9","host":"10.0.0.9","port":9101,"transport":"raw"})");
        QTRY_COMPARE(add()->property("symbol").toString(), u"checkmark"_s);
        QCOMPARE(focusItem(), add());
        focus("عنوان IP");
        type("h");
        key(Qt::Key_Return);
        isSent("/admin/printers/add", R"({"type":"net","name":"Network h","host":"h","port":9100,"transport":"raw"})");
        press("بحث Bonjour (واي فاي / AirPrint)");
        QTRY_COMPARE(sent("/admin/discover/bonjour"), 1);
        focus("شبكة (LAN / Wi-Fi)");
        key(Qt::Key_Left); // the next tab
        press("ابحث عن طابعات USB");
        QTRY_VERIFY(find("تعريف للطباعة الخام"));
        QVERIFY(!find("عنوان IP", "name"));
        press("تعريف للطباعة الخام");
        isSent("/admin/printers/add-usb", R"({"name":"TM","uri":"usb:x"})");
        key(Qt::Key_Escape);
        QTRY_VERIFY(!view().isAdding());
    }

    void wizardByKeyboard()
    {
        m_stage->defaults().setBoolean("onboardingDone"_L1, false);
        open();
        QTRY_COMPARE(focused(), u"تفعيل"_s);
        QVERIFY(!find("الطابعات")); // nothing of the pages shows through
        key(Qt::Key_Escape);
        QVERIFY(find("الخطوة 1 من 4"));
        holdKey(*window(), Qt::Key_Return, 3); // this computer has no login items
        QVERIFY(find("الخطوة 2 من 4"));
        QCOMPARE(focused(), u"السماح بالإشعارات"_s);
        goes(Qt::Key_Tab, "تخطي");
        goes(Qt::Key_Return, "تفعيل"); // not on the button to skip with
        goes(Qt::Key_Tab, "تخطي، لا أستخدم Safari");
        goes(Qt::Key_Space, "السماح");
        holdAnswers();
        key(Qt::Key_Return);
        QVERIFY(find("بانتظارك…") && !find("السماح"));
        QTRY_COMPARE(sent("/admin/discover/bonjour"), 1);
        key(Qt::Key_Return, {}, 3); // impatience
        QVERIFY(find("الخطوة 4 من 4"));
        key(Qt::Key_Tab);
        key(Qt::Key_Return);
        QVERIFY(find("اكتمل الإعداد") && find("لم يكتمل") && find("تم التخطي"));
        QCOMPARE(focused(), u"ابدأ الاستخدام"_s);
        key(Qt::Key_Return);
        QVERIFY(!view().showsOnboarding() && find("الطابعات") && agent().isScanning());
        QVERIFY(m_stage->defaults().boolean("onboardingDone"_L1));
        m_window->close();
        open();
        QVERIFY(!view().showsOnboarding());
        view().setPage(u"settings"_s);
        press("فتح المعالج");
        QVERIFY(find("الخطوة 1 من 4"));
        QCOMPARE(focused(), u"تفعيل"_s);
    }

    void settingsAskAndShowWhatCameOfIt()
    {
        open("shop", "settings");
        const auto isOn = [this](const char *words) { return control(words)->property("on").toBool(); };
        for (const bool on : {true, false}) {
            press("إبقاء الجهاز مستيقظًا");
            QVERIFY(agent().keepAwake() == on && isOn("إبقاء الجهاز مستيقظًا") == on);
        }
        press("التشغيل عند بدء تشغيل الجهاز");
        QVERIFY(m_stage->defaults().boolean("loginWanted"_L1) && !isOn("التشغيل عند بدء تشغيل الجهاز")); // refused
        press("إعادة تسجيل");
        QVERIFY(agent().toast().startsWith(u"تعذرت إعادة التسجيل"_s));
        press("إرسال إشعار تجريبي");
        QCOMPARE(m_stage->host().notifier.posted.size(), 1);
        press("فتح إعدادات النظام");
        QCOMPARE(m_stage->host().desktop.panes, {Desktop::SettingsPane::Network});
        press("الموافقة التلقائية على المواقع المسموحة");
        QTRY_COMPARE(sent("/admin/settings"), 1);
        press("التحقق من التحديثات");
        QTRY_COMPARE(sent("/admin/update/check"), 1);
        press("حفظ التقرير");
        QTRY_COMPARE(m_stage->host().desktop.asked.size(), 1);
        press("إعادة التشغيل");
        m_clock.advance(2s);
        QTRY_VERIFY(agent().isRunning());
        agent().shutDown();
        press("عرض أكبر");
        QVERIFY(view().showsLog());
    }

    void settingsHelpWhereSomethingIsMissing()
    {
        auto &notifier = m_stage->host().notifier;
        notifier.authorization = NotificationStatus::Denied;
        open("stopped", "settings");
        QVERIFY(!control("الموافقة التلقائية على المواقع المسموحة")->isEnabled());
        QVERIFY(!find("إرسال إشعار تجريبي"));
        press("السماح في إعدادات النظام");
        QCOMPARE(m_stage->host().desktop.panes, {Desktop::SettingsPane::Notifications});
        notifier.authorization = NotificationStatus::NotDetermined; // the person was there
        view().setPage(u"overview"_s);
        view().setPage(u"settings"_s);
        notifier.authorization = NotificationStatus::Authorized;
        press("السماح بالإشعارات");
        QVERIFY(find("إرسال إشعار تجريبي"));
    }

    void logKeepsItsPlace()
    {
        open();
        QQmlComponent component(m_window->engine(), QUrl(u"qrc:/qt/qml/Zemrak/Kit/components/LogText.qml"_s));
        const std::unique_ptr<QQuickItem> box(qobject_cast<QQuickItem *>(component.create()));
        box->setParentItem(root());
        box->setSize({400, 150});
        QVERIFY(find("لا توجد رسائل."));
        box->setProperty("log", lines(1, 40));
        const auto having = [&box](const char *property) {
            return itemsWhere(box.get(), [&](const QQuickItem *item) {
                return item->property(property).isValid();
            }).value(0);
        };
        QQuickItem *scroll = having("contentY");
        QQuickItem *text = having("selectedText");
        const auto place = [scroll] { return scroll->property("contentY").toDouble(); };
        const auto end = [scroll] { return scroll->property("contentHeight").toDouble() - scroll->height(); };
        const auto topLine = [&] {
            int position = 0;
            QMetaObject::invokeMethod(
                text, "positionAt", Q_RETURN_ARG(int, position), Q_ARG(double, 0), Q_ARG(double, place() - text->y()));
            QString line;
            QMetaObject::invokeMethod(
                text, "getText", Q_RETURN_ARG(QString, line), Q_ARG(int, position), Q_ARG(int, position + 8));
            return line;
        };
        QVERIFY(end() > 100);
        QCOMPARE(place(), end());
        box->setProperty("log", lines(1, 60));
        QCOMPARE(place(), end());
        scroll->setProperty("contentY", qRound(end() / 2));
        const QString read = topLine();
        QVERIFY2(read.contains("line"_L1), qPrintable(read));
        const int length = text->property("length").toInt();
        QMetaObject::invokeMethod(text, "select", Q_ARG(int, length - 40), Q_ARG(int, length - 20));
        const QString selected = text->property("selectedText").toString();
        box->setProperty("log", lines(11, 90)); // some went, some came
        QCOMPARE(topLine(), read);
        QCOMPARE(text->property("selectedText").toString(), selected);
        QVERIFY(place() < end() - 50);
        box->setProperty("log", lines(200, 240)); // nothing is left of what was read
        QVERIFY(place() <= end());
        box->setProperty("log", QString());
        QVERIFY(find("لا توجد رسائل."));
    }

private:
    void openShop()
    {
        Answers answers{{"/admin/printers/add-usb", R"({"queue":"TM"})"},
            {"/admin/discover/network", R"({"hosts":[{"host":"10.0.0.9","port":9101}]})"},
            {"/admin/discover/bonjour", R"({"services":[{"name":"A","host":"a","port":631,"transport":"ipp"}]})"},
            {"/admin/discover/usb", R"({"devices":[{"product":"TM","uri":"usb:x"}]})"}};
        for (const char *path : {"/admin/profile", "/admin/printers/action", "/admin/printers/add"})
            answers.insert(path, "{}");
        enter("shop", answers);
        open();
    }
    void openProfile(bool inNewWindow = true)
    {
        if (inNewWindow)
            openShop();
        view().edit(u"cups-kitchen"_s);
        m_clock.advance(0ms);
        QTRY_COMPARE(focused(), u"لغة الطابعة"_s);
    }
    void holdAnswers()
    {
        m_stage->server().answerWith([](const HttpRequest &, QTcpSocket &) {});
    }
    void typeAlias()
    {
        focus("اسم مستعار");
        key(Qt::Key_A, Qt::ControlModifier);
        type("b");
    }
    QString saved(const char *field)
    {
        return QJsonDocument::fromJson(body("/admin/profile"))[u"profile"][QLatin1String(field)].toVariant().toString();
    }
    void isSent(const char *path, const char *json)
    {
        QTRY_COMPARE(QJsonDocument::fromJson(body(path)), QJsonDocument::fromJson(json));
    }
};

ZEMRAK_TEST(sheets, SheetsTest, QApplication)
#include "tst_sheets.moc"
