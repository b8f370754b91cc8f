// The page of settings, the first-run wizard and the log, worked as a person does.
#include "support/heldkey.h"
#include "support/testmain.h"
#include "ui/window/windowtest.h"

#include <QApplication>
#include <QQmlComponent>
#include <QQmlEngine>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

// What is shown with that text, or can be pressed by it.
QQuickItem *shown(QQuickItem *item, const QString &text, const char *type = "QQuickItem")
{
    return itemsWhere(item, [&](const QQuickItem *candidate) {
        return candidate->inherits(type) && candidate->property("text").toString() == text;
    }).value(0);
}

QQuickItem *withProperty(QQuickItem *item, const char *property)
{
    return itemsWhere(item, [&](const QQuickItem *candidate) {
        return candidate->property(property).isValid();
    }).value(0);
}

QString lines(int first, int last)
{
    QString text;
    for (int i = first; i <= last; ++i)
        text += QStringLiteral("line %1\n").arg(i);
    return text;
}

} // namespace

class SettingsTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void wizardByKeyboard()
    {
        m_stage->defaults().setBoolean(QLatin1String("onboardingDone"), false);
        open();
        QTRY_COMPARE(focused(), QStringLiteral("تفعيل"));
        key(Qt::Key_Escape);
        QVERIFY(shown(root(), QStringLiteral("الخطوة 1 من 4")));
        holdKey(*window(), Qt::Key_Return, 3); // this computer has no login items
        QVERIFY(shown(root(), QStringLiteral("الخطوة 2 من 4")));
        QCOMPARE(focused(), QStringLiteral("السماح بالإشعارات"));
        key(Qt::Key_Tab);
        QCOMPARE(focused(), QStringLiteral("تخطي"));
        key(Qt::Key_Return);
        QCOMPARE(focused(), QStringLiteral("تفعيل")); // not on the button to skip with
        key(Qt::Key_Tab);
        QCOMPARE(focused(), QStringLiteral("تخطي، لا أستخدم Safari"));
        key(Qt::Key_Space);
        QCOMPARE(focused(), QStringLiteral("السماح"));

        m_stage->server().answerWith([](const HttpRequest &, QTcpSocket &) {}); // it takes its time
        key(Qt::Key_Return);
        QVERIFY(shown(root(), QStringLiteral("الخطوة 4 من 4")));
        QVERIFY(shown(root(), QStringLiteral("بانتظارك…")));
        QVERIFY(!shown(root(), QStringLiteral("السماح")));
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/discover/bonjour").size(), 1);
        for (int impatience = 0; impatience < 3; ++impatience)
            key(Qt::Key_Return);
        QVERIFY(shown(root(), QStringLiteral("الخطوة 4 من 4")));
        key(Qt::Key_Tab);
        key(Qt::Key_Return);

        QVERIFY(shown(root(), QStringLiteral("اكتمل الإعداد")));
        QVERIFY(shown(root(), QStringLiteral("لم يكتمل")) && shown(root(), QStringLiteral("تم التخطي")));
        QCOMPARE(focused(), QStringLiteral("ابدأ الاستخدام"));
        key(Qt::Key_Return);
        QVERIFY(!view().showsOnboarding());
        QVERIFY(m_stage->defaults().boolean(QLatin1String("onboardingDone")));
        QVERIFY(m_stage->agent().isScanning());

        view().setPage(QStringLiteral("settings"));
        press(QStringLiteral("فتح المعالج"));
        QVERIFY(shown(root(), QStringLiteral("الخطوة 1 من 4")));
        QCOMPARE(focused(), QStringLiteral("تفعيل"));
    }

    void settingsAskAndShowWhatCameOfIt()
    {
        QVERIFY(m_stage->enter(QStringLiteral("shop")));
        openSettings();
        const QString awake = QStringLiteral("إبقاء الجهاز مستيقظًا");
        press(awake);
        QVERIFY(m_stage->agent().keepAwake() && isOn(awake));
        press(awake);
        QVERIFY(!m_stage->agent().keepAwake() && !isOn(awake));
        const QString login = QStringLiteral("التشغيل عند بدء تشغيل الجهاز");
        press(login);
        QVERIFY(m_stage->defaults().boolean(QLatin1String("loginWanted")) && !isOn(login)); // refused
        press(QStringLiteral("إعادة تسجيل"));
        QVERIFY(m_stage->agent().toast().startsWith(QStringLiteral("تعذرت إعادة التسجيل")));
        press(QStringLiteral("إرسال إشعار تجريبي"));
        QCOMPARE(m_stage->host().notifier.posted.size(), 1);
        press(QStringLiteral("فتح إعدادات النظام"));
        QCOMPARE(m_stage->host().desktop.panes, {Desktop::SettingsPane::Network});
        press(QStringLiteral("الموافقة التلقائية على المواقع المسموحة"));
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/settings").size(), 1);
        press(QStringLiteral("التحقق من التحديثات"));
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/update/check").size(), 1);
        press(QStringLiteral("حفظ التقرير"));
        QTRY_COMPARE(m_stage->host().desktop.asked.size(), 1);
        press(QStringLiteral("إعادة التشغيل"));
        m_clock.advance(2s);
        QTRY_VERIFY(m_stage->agent().isRunning());
        m_stage->agent().shutDown();
        press(QStringLiteral("عرض أكبر"));
        QVERIFY(view().showsLog());
    }

    void settingsHelpWhereSomethingIsMissing()
    {
        QVERIFY(m_stage->enter(QStringLiteral("stopped")));
        m_stage->host().notifier.authorization = NotificationStatus::Denied;
        openSettings();
        QVERIFY(!button(QStringLiteral("الموافقة التلقائية على المواقع المسموحة"))->isEnabled());
        QVERIFY(!button(QStringLiteral("إرسال إشعار تجريبي")));
        press(QStringLiteral("السماح في إعدادات النظام"));
        QCOMPARE(m_stage->host().desktop.panes, {Desktop::SettingsPane::Notifications});
        m_stage->host().notifier.authorization = NotificationStatus::NotDetermined; // the person was there
        view().setPage(QStringLiteral("overview"));
        view().setPage(QStringLiteral("settings"));
        m_stage->host().notifier.authorization = NotificationStatus::Authorized;
        press(QStringLiteral("السماح بالإشعارات"));
        QVERIFY(button(QStringLiteral("إرسال إشعار تجريبي")));
    }

    void logKeepsItsPlace()
    {
        open();
        QQmlComponent component(
            m_window->engine(), QUrl(QStringLiteral("qrc:/qt/qml/Zemrak/Kit/components/LogText.qml")));
        const std::unique_ptr<QObject> object(component.create());
        auto *box = qobject_cast<QQuickItem *>(object.get());
        QVERIFY(box);
        box->setParentItem(root());
        box->setSize({400, 150});
        QVERIFY(shown(box, QStringLiteral("لا توجد رسائل.")));
        box->setProperty("log", lines(1, 40));
        QQuickItem *scroll = withProperty(box, "contentY");
        QQuickItem *text = withProperty(box, "selectedText");
        const auto place = [scroll] { return scroll->property("contentY").toDouble(); };
        const auto end = [scroll] { return scroll->property("contentHeight").toDouble() - scroll->height(); };
        const auto topLine = [&] {
            int position = 0;
            QString line;
            QMetaObject::invokeMethod(
                text, "positionAt", Q_RETURN_ARG(int, position), Q_ARG(double, 0), Q_ARG(double, place() - text->y()));
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
        QVERIFY2(read.contains(QLatin1String("line")), qPrintable(read));
        QMetaObject::invokeMethod(text, "select", Q_ARG(int, text->property("length").toInt() - 40),
            Q_ARG(int, text->property("length").toInt() - 20));
        const QString selected = text->property("selectedText").toString();
        box->setProperty("log", lines(11, 90)); // some went, some came
        QCOMPARE(topLine(), read);
        QCOMPARE(text->property("selectedText").toString(), selected);
        QVERIFY(place() < end() - 50);
        box->setProperty("log", lines(200, 240)); // nothing is left of what was read
        QVERIFY(place() <= end());
        box->setProperty("log", QString());
        QVERIFY(shown(box, QStringLiteral("لا توجد رسائل.")));
    }

private:
    void openSettings()
    {
        open();
        view().setPage(QStringLiteral("settings"));
    }
    QString focused()
    {
        const QQuickItem *item = window()->activeFocusItem();
        return item ? item->property("text").toString() : QString();
    }
    QQuickItem *button(const QString &text) { return shown(root(), text, "QQuickAbstractButton"); }
    void press(const QString &text)
    {
        QQuickItem *item = button(text);
        QVERIFY2(item, qPrintable(text));
        pressAccessibly(item);
    }
    bool isOn(const QString &text) { return button(text)->property("on").toBool(); }
};

ZEMRAK_TEST(settings, SettingsTest, QApplication)
#include "tst_settings.moc"
