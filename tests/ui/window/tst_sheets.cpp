// The sheets of a printer's settings and of adding one, worked as a person does, with what then reaches the service.
#include "support/testmain.h"
#include "ui/window/windowtest.h"

#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

const QByteArray profilePath = "/admin/profile";

// The control of that name, in sight or scrolled away, but not hidden; of several the topmost, as a sheet lies on top.
QQuickItem *control(QQuickItem *item, const QString &name)
{
    const QList<QQuickItem *> found = itemsWhere(item, [&name](const QQuickItem *candidate) {
        return candidate->activeFocusOnTab()
            && (candidate->property("name").toString() == name || candidate->property("text").toString() == name);
    });
    return found.isEmpty() ? nullptr : found.last();
}

} // namespace

class SheetsTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        setUp();
        QVERIFY(m_stage->enter(withAnswers()));
        open();
    }

    void openingSavesNothing()
    {
        openSettings();
        m_clock.advance(5s);
        view().endEditing();
        m_window->close();
        QVERIFY(m_stage->enter(QStringLiteral("quiet"))); // is asked after anything that was sent before
        QCOMPARE(saves().size(), 0);
    }

    void aChoiceIsSavedOnce()
    {
        openSettings();
        QCOMPARE(focusItem()->property("name").toString(), QStringLiteral("لغة الطابعة"));
        press(Qt::Key_Down);
        press(Qt::Key_Down);
        m_clock.advance(50ms);
        QTRY_COMPARE(saves().size(), 1);
        QCOMPARE(saves().last()[QLatin1String("protocol")].toString(), QStringLiteral("starline"));
        m_clock.advance(5s);
        QCOMPARE(saves().size(), 1);
        focus(QStringLiteral("عرض الطباعة"));
        press(Qt::Key_Down);
        m_clock.advance(50ms);
        QTRY_COMPARE(saves().size(), 2);
        QCOMPARE(saves().last()[QLatin1String("dots")], QJsonValue(384));
    }

    void leavingSavesWhatWasTyped_data()
    {
        QTest::addColumn<QString>("way");
        for (const char *way : {"escape", "cross", "window", "frame", "request", "quit"})
            QTest::newRow(way) << QString::fromLatin1(way);
    }

    void leavingSavesWhatWasTyped()
    {
        QFETCH(QString, way);
        openSettings();
        focus(QStringLiteral("اسم مستعار"));
        press(Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(window(), 'b');
        QCoreApplication::processEvents();
        QCOMPARE(saves().size(), 0);
        if (way == QLatin1String("escape"))
            press(Qt::Key_Escape);
        else if (way == QLatin1String("cross"))
            click(QStringLiteral("إغلاق"));
        else if (way == QLatin1String("window"))
            press(Qt::Key_W, Qt::ControlModifier);
        else if (way == QLatin1String("frame"))
            m_window->window()->close();
        else if (way == QLatin1String("request"))
            m_stage->agent().setRequestedPage(Page::Alerts);
        else
            m_window->close(); // as the application's end does
        QTRY_COMPARE(saves().size(), 1);
        QCOMPARE(saves().last()[QLatin1String("alias")].toString(), QStringLiteral("b"));
    }

    // While the service is slow to answer, what it told last is older than what the person changed last.
    void reopenedSheetHasWhatWasChanged()
    {
        m_stage->server().answerWith([](const HttpRequest &, QTcpSocket &) {});
        openSettings();
        focus(QStringLiteral("اسم مستعار"));
        press(Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(window(), 'b');
        press(Qt::Key_Escape);
        QTRY_COMPARE(saves().size(), 1);
        openSettings();
        QCOMPARE(session().profile()->alias(), QStringLiteral("b"));
    }

    // Somebody clicks a notification while the window, on its way out, waits for a save to be answered.
    void windowAskedForWhileItClosesComesBack()
    {
        m_stage->server().answerWith([](const HttpRequest &, QTcpSocket &) {});
        openSettings();
        press(Qt::Key_Down);
        const QPointer<QQuickWindow> first = window();
        QTimer::singleShot(50ms, this, [this] {
            m_stage->agent().setRequestedPage(Page::Alerts);
            m_window->show({});
            m_window->close();
            m_clock.advance(2s);
        });
        m_window->close();
        QVERIFY(!m_window->isOpen() && !first);
        QCOMPARE(saves().size(), 1);
        QTRY_VERIFY(m_window->isOpen());
        QVERIFY(QTest::qWaitForWindowActive(window()));
        QCoreApplication::sendPostedEvents(); // what was left of the first must not close the second
        QVERIFY(m_window->isOpen() && window()->isVisible());
        QCOMPARE(view().page(), QStringLiteral("alerts"));
    }

    void givesTheKeyboardBack()
    {
        focus(QStringLiteral("نظرة عامة"));
        QQuickItem *before = focusItem();
        openSettings();
        QVERIFY(focusItem() != before);
        press(Qt::Key_Escape);
        QTRY_COMPARE(focusItem(), before);
    }

    void escapeClosesTheTopmost()
    {
        openSettings();
        press(Qt::Key_Return);
        QTRY_VERIFY(control(root(), QStringLiteral("لغة الطابعة"))->property("open").toBool());
        press(Qt::Key_Escape); // the list of choices
        QTRY_VERIFY(!control(root(), QStringLiteral("لغة الطابعة"))->property("open").toBool());
        QCOMPARE(view().editing(), QStringLiteral("cups-kitchen"));
        press(Qt::Key_Escape);
        QTRY_COMPARE(view().editing(), QString());
    }

    void anotherPrinterTakesTheSheetOver()
    {
        openSettings();
        press(Qt::Key_Down);
        view().edit(QStringLiteral("net-1"));
        QTRY_COMPARE(saves().size(), 1);
        QTRY_VERIFY(focusItem() && focusItem()->property("name").toString() == QStringLiteral("لغة الطابعة"));
        QCOMPARE(control(root(), QStringLiteral("اسم مستعار"))->property("text").toString(), QStringLiteral("كاشير 1"));
        QVERIFY(!control(root(), QStringLiteral("مسح الوظائف العالقة"))); // not a queue of the system
    }

    void maintenanceIsSent()
    {
        openSettings();
        focus(QStringLiteral("درج النقد"));
        press(Qt::Key_Down);
        click(QStringLiteral("فتح الدرج"));
        QTRY_COMPARE(body("/admin/printers/action"),
            QJsonDocument::fromJson(R"({"id":"cups-kitchen","action":"drawer","pin":"5"})"));
        click(QStringLiteral("مسح الوظائف العالقة")); // what cannot be taken back is asked first
        QTRY_VERIFY(control(root(), QStringLiteral("مسح")));
        QCOMPARE(m_stage->server().requestsTo("/admin/printers/action").size(), 1);
        click(QStringLiteral("مسح"));
        QTRY_COMPARE(
            body("/admin/printers/action"), QJsonDocument::fromJson(R"({"id":"cups-kitchen","action":"clear-queue"})"));
    }

    void findsAndAdds()
    {
        view().setAdding(true);
        QTRY_VERIFY(focusItem() && focusItem()->property("text").toString() == QStringLiteral("شبكة (LAN / Wi-Fi)"));
        click(QStringLiteral("ابحث عن طابعات في الشبكة"));
        const QString add = QStringLiteral("إضافة");
        QTRY_VERIFY(control(itemOfType(root(), "AddPrinterHits"), add));
        press(control(itemOfType(root(), "AddPrinterHits"), add));
        QTRY_COMPARE(body("/admin/printers/add"),
            QJsonDocument::fromJson(
                R"({"type":"net","name":"Network 10.0.0.9","host":"10.0.0.9","port":9101,"transport":"raw"})"));
        QTRY_COMPARE(control(itemOfType(root(), "AddPrinterHits"), add)->property("symbol").toString(),
            QStringLiteral("checkmark"));
        QCOMPARE(focusItem(), control(itemOfType(root(), "AddPrinterHits"), add));

        focus(QStringLiteral("عنوان IP"));
        QTest::keyClick(window(), 'h');
        press(Qt::Key_Return);
        QTRY_COMPARE(body("/admin/printers/add"),
            QJsonDocument::fromJson(R"({"type":"net","name":"Network h","host":"h","port":9100,"transport":"raw"})"));

        click(QStringLiteral("بحث Bonjour (واي فاي / AirPrint)"));
        QTRY_VERIFY(control(root(), QStringLiteral("ابحث عن طابعات في الشبكة")));
        focus(QStringLiteral("شبكة (LAN / Wi-Fi)"));
        press(Qt::Key_Left); // the next tab
        click(QStringLiteral("ابحث عن طابعات USB"));
        QTRY_VERIFY(control(root(), QStringLiteral("تعريف للطباعة الخام")));
        QVERIFY(!control(root(), QStringLiteral("عنوان IP")));
        click(QStringLiteral("تعريف للطباعة الخام"));
        QTRY_COMPARE(body("/admin/printers/add-usb"), QJsonDocument::fromJson(R"({"name":"TM","uri":"usb:x"})"));
        press(Qt::Key_Escape);
        QTRY_VERIFY(!view().isAdding());
    }

private:
    static Situation withAnswers()
    {
        const Situation *shop = findSituation(QStringLiteral("shop"));
        return {QStringLiteral("shop"), QString(), [shop] {
                    Answers answers = shop->answers();
                    for (const char *path : {"/admin/profile", "/admin/printers/action", "/admin/printers/add"})
                        answers.insert(path, "{}");
                    answers.insert("/admin/printers/add-usb", R"({"queue":"TM"})");
                    answers.insert("/admin/discover/network", R"({"hosts":[{"host":"10.0.0.9","port":9101}]})");
                    answers.insert("/admin/discover/bonjour",
                        R"({"services":[{"name":"A","host":"a","port":631,"transport":"ipp"}]})");
                    answers.insert("/admin/discover/usb", R"({"devices":[{"product":"TM","uri":"usb:x"}]})");
                    return answers;
                }};
    }

    void openSettings()
    {
        view().edit(QStringLiteral("cups-kitchen"));
        m_clock.advance(0ms);
        QTRY_VERIFY(focusItem() && focusItem()->property("name").toString() == QStringLiteral("لغة الطابعة"));
    }
    QList<QJsonObject> saves() const
    {
        QList<QJsonObject> list;
        const QList<HttpRequest> requests = m_stage->server().requestsTo(profilePath);
        for (const HttpRequest &request : requests)
            list.append(QJsonDocument::fromJson(request.body).object()[QLatin1String("profile")].toObject());
        return list;
    }
    QJsonDocument body(const QByteArray &path) const
    {
        const QList<HttpRequest> requests = m_stage->server().requestsTo(path);
        return requests.isEmpty() ? QJsonDocument() : QJsonDocument::fromJson(requests.last().body);
    }
    void focus(const QString &name)
    {
        QQuickItem *item = control(root(), name);
        QVERIFY2(item, qPrintable(name));
        item->forceActiveFocus(Qt::TabFocusReason);
    }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(window(), Qt::Key(key), modifiers);
    }
    void press(QQuickItem *item)
    {
        item->forceActiveFocus(Qt::TabFocusReason);
        press(Qt::Key_Space);
    }
    void click(const QString &name)
    {
        QQuickItem *item = control(root(), name);
        QVERIFY2(item, qPrintable(name));
        press(item);
    }
};

ZEMRAK_TEST(sheets, SheetsTest, QApplication)
#include "tst_sheets.moc"
