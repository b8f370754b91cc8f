// The sheets of a printer's settings and of adding one, worked as a person does, with what then reaches the service.
#include "app/agent.h"
#include "demo/stage.h"
#include "support/warnings.h"
#include "support/manualclock.h"
#include "support/testmain.h"
#include "ui/window/shell/qmlwindow.h"
#include "ui/window/shell/uicontext.h"

#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <QTimer>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

const QByteArray profilePath = "/admin/profile";

// The control of that name, in sight or scrolled away, but not hidden.
QQuickItem *control(QQuickItem *item, const QString &name)
{
    if (!item || !item->isVisible())
        return nullptr;
    for (const char *property : {"name", "text"}) {
        if (item->activeFocusOnTab() && item->property(property).toString() == name)
            return item;
    }
    const QList<QQuickItem *> children = item->childItems();
    for (auto child = children.crbegin(); child != children.crend(); ++child) { // the sheet lies on top
        if (QQuickItem *found = control(*child, name))
            return found;
    }
    return nullptr;
}

} // namespace

class SheetsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_warnings = std::make_unique<Warnings>(); }

    void init()
    {
        m_stage = std::make_unique<Stage>(m_clock);
        m_window = std::make_unique<QmlWindow>(m_stage->services());
        m_window->appearance().overrideReducedMotion(true);
        static_cast<void>(m_warnings->take());
        QVERIFY(m_stage->enter(withAnswers()));
        m_window->show({});
        QVERIFY(QTest::qWaitForWindowActive(m_window->window()));
    }

    void cleanup()
    {
        m_window.reset();
        m_stage.reset();
        QCOMPARE(m_warnings->take(), QStringList());
    }

    void openingSavesNothing()
    {
        openSettings();
        m_clock.advance(5s);
        view().endEditing();
        m_window->close();
        QTest::qWait(30); // long enough for a request to arrive that should not
        QCOMPARE(saves().size(), 0);
    }

    void aChoiceIsSavedOnce()
    {
        openSettings();
        QCOMPARE(focused()->property("name").toString(), QStringLiteral("لغة الطابعة"));
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
        QTest::keyClick(m_window->window(), 'b');
        QTest::qWait(30);
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
        QTest::keyClick(m_window->window(), 'b');
        press(Qt::Key_Escape);
        QTRY_COMPARE(saves().size(), 1);
        openSettings();
        QCOMPARE(UiContext::of(m_window->engine()).presenters().editor()->alias(), QStringLiteral("b"));
    }

    // Somebody clicks a notification while the window, on its way out, waits for a save to be answered.
    void windowAskedForWhileItClosesComesBack()
    {
        m_stage->server().answerWith([](const HttpRequest &, QTcpSocket &) {});
        openSettings();
        press(Qt::Key_Down);
        const QPointer<QQuickWindow> first = m_window->window();
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
        QTest::qWait(50); // what was left of the first must not close the second
        QVERIFY(m_window->isOpen() && m_window->window()->isVisible());
        QCOMPARE(view().page(), QStringLiteral("alerts"));
    }

    void givesTheKeyboardBack()
    {
        focus(QStringLiteral("نظرة عامة"));
        QQuickItem *before = focused();
        openSettings();
        QVERIFY(focused() != before);
        press(Qt::Key_Escape);
        QTRY_COMPARE(focused(), before);
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
        QTRY_VERIFY(focused() && focused()->property("name").toString() == QStringLiteral("لغة الطابعة"));
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
        click(QStringLiteral("مسح الوظائف العالقة"));
        QTRY_COMPARE(
            body("/admin/printers/action"), QJsonDocument::fromJson(R"({"id":"cups-kitchen","action":"clear-queue"})"));
    }

    void findsAndAdds()
    {
        view().setAdding(true);
        QTRY_VERIFY(focused() && focused()->property("text").toString() == QStringLiteral("شبكة (LAN / Wi-Fi)"));
        click(QStringLiteral("ابحث عن طابعات في الشبكة"));
        const QString add = QStringLiteral("إضافة");
        QTRY_VERIFY(control(page("AddPrinterHits"), add));
        press(control(page("AddPrinterHits"), add));
        QTRY_COMPARE(body("/admin/printers/add"),
            QJsonDocument::fromJson(
                R"({"type":"net","name":"Network 10.0.0.9","host":"10.0.0.9","port":9101,"transport":"raw"})"));
        QTRY_COMPARE(control(page("AddPrinterHits"), add)->property("symbol").toString(), QStringLiteral("checkmark"));
        QCOMPARE(focused(), control(page("AddPrinterHits"), add));

        focus(QStringLiteral("عنوان IP"));
        QTest::keyClick(m_window->window(), 'h');
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
        QTRY_VERIFY(focused() && focused()->property("name").toString() == QStringLiteral("لغة الطابعة"));
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
        QTest::keyClick(m_window->window(), Qt::Key(key), modifiers);
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
    // The visible part of the sheets that is made by that file.
    QQuickItem *page(const char *file)
    {
        for (QQuickItem *item : everything(root())) {
            if (item->isVisible() && QByteArray(item->metaObject()->className()).startsWith(file))
                return item;
        }
        return nullptr;
    }
    static QList<QQuickItem *> everything(QQuickItem *item)
    {
        QList<QQuickItem *> all{item};
        const QList<QQuickItem *> children = item->childItems();
        for (QQuickItem *child : children)
            all += everything(child);
        return all;
    }
    QQuickItem *focused() { return m_window->window()->activeFocusItem(); }
    QQuickItem *root() { return m_window->window()->contentItem(); }
    MainView &view() { return UiContext::of(m_window->engine()).mainView(); }

    std::unique_ptr<Warnings> m_warnings;
    ManualClock m_clock;
    std::unique_ptr<Stage> m_stage;
    std::unique_ptr<QmlWindow> m_window;
};

ZEMRAK_TEST(sheets, SheetsTest, QApplication)
#include "tst_sheets.moc"
