// The page of the receipt designer: what keys and presses do there, and what must not lose its place.
#include "support/testmain.h"
#include "ui/window/windowtest.h"

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

DesignerDoc manyItems()
{
    DesignerDoc doc = DesignerDoc::sample();
    for (int i = 3; i < 300; ++i)
        doc.items.append({.name = u"صنف %1"_s.arg(i + 1), .qty = u"2"_s, .price = QString::number(i)});
    return doc;
}

} // namespace

class DesignerPageTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void typingReachesTheDocument()
    {
        open("shop");
        const std::pair<const char *, QString DesignerDoc::*> fields[] = {{"العملة", &DesignerDoc::currency},
            {"اسم المنشأة", &DesignerDoc::businessName}, {"وصف مختصر", &DesignerDoc::subtitle},
            {"العنوان", &DesignerDoc::address}, {"الهاتف", &DesignerDoc::phone},
            {"الرقم الضريبي", &DesignerDoc::taxNumber}, {"عنوان الورقة", &DesignerDoc::title},
            {"رقم الفاتورة", &DesignerDoc::receiptNo}, {"العميل", &DesignerDoc::customer},
            {"الموظف / الكاشير", &DesignerDoc::cashier}, {"طريقة الدفع", &DesignerDoc::payment},
            {"الخصم (مبلغ)", &DesignerDoc::discount}, {"ضريبة القيمة المضافة %", &DesignerDoc::vatPercent},
            {"محتوى الـ QR", &DesignerDoc::qrData}, {"بيانات الباركود", &DesignerDoc::barcodeData},
            {"عبارة التذييل", &DesignerDoc::footer}, {"ملاحظة إضافية", &DesignerDoc::footerNote}};
        char typed[] = "a";
        for (const auto &[name, field] : fields) {
            focus(name);
            QTest::keySequence(window(), QKeySequence::SelectAll);
            type(typed);
            QVERIFY2(designer().doc().*field == QLatin1String(typed), name);
            ++typed[0];
        }
        const std::pair<const char *, bool DesignerDoc::*> switches[] = {{"طباعة QR", &DesignerDoc::qrEnabled},
            {"طباعة باركود", &DesignerDoc::barcodeEnabled}, {"قص الورقة بعد الطباعة", &DesignerDoc::cut},
            {"فتح درج النقود", &DesignerDoc::drawer}, {"صفير بعد الطباعة", &DesignerDoc::beep}};
        for (const auto &[name, field] : switches) {
            const bool before = designer().doc().*field;
            press(name);
            QVERIFY2(designer().doc().*field != before, name);
        }
    }

    void keyboardGoesThroughTheProducts()
    {
        open("shop", manyItems());
        focus("طريقة الدفع");
        goes(Qt::Key_Tab, "اسم المنتج 1");
        goes(Qt::Key_Backtab, "طريقة الدفع");
        goes(Qt::Key_Tab, "اسم المنتج 1");
        for (int row = 1; row < 40; ++row) { // far beyond what was in sight
            goes(Qt::Key_Tab, "الكمية %1", row);
            goes(Qt::Key_Tab, "السعر %1", row);
            key(Qt::Key_Tab); // its bin
            goes(Qt::Key_Tab, "اسم المنتج %1", row + 1);
            QVERIFY(isInSight(focusItem()));
        }
        QVERIFY(count("السعر", "placeholder") < 60); // only rows in sight exist
        key(Qt::Key_Backtab);
        goes(Qt::Key_Backtab, "السعر 39");
        goes(Qt::Key_Return, "اسم المنتج 40");
        key(Qt::Key_Tab, {}, 3); // to its bin
        key(Qt::Key_Space);
        QCOMPARE(designer().doc().items.size(), 299);
        focus("الخصم (مبلغ)");
        goes(Qt::Key_Backtab, "إضافة منتج");
        goes(Qt::Key_Backtab, "حذف");
        QVERIFY(isInSight(focusItem()));
        goes(Qt::Key_Tab, "إضافة منتج");
    }

    void newProductIsTypedAtOnce()
    {
        open("shop");
        press("إضافة منتج");
        QCOMPARE(focused(), u"اسم المنتج 2"_s);
        type("x");
        key(Qt::Key_Return);
        type("2");
        key(Qt::Key_Return);
        type("7");
        QCOMPARE(designer().doc().items.at(1).qty, u"12"_s);
        QCOMPARE(designer().doc().items.at(1).price, u"7"_s);
        for (int i = 3; i < 33; ++i) {
            goes(Qt::Key_Return, "اسم المنتج %1", i); // a new one each time, and in sight
            type("y");
            key(Qt::Key_Return, {}, 2);
            settle();
            QTRY_VERIFY(isInSight(focusItem()));
        }
        QCOMPARE(designer().doc().items.size(), 32);
        key(Qt::Key_Tab); // to the bin of the last one
        key(Qt::Key_Space);
        QCOMPARE(designer().doc().items.size(), 31);
        QVERIFY(!focused().isEmpty()); // the keyboard is not lost with the row
    }

    void lastProductGoesWithoutTheKeyboard()
    {
        open("shop");
        focus("السعر 1");
        key(Qt::Key_Tab);
        key(Qt::Key_Space);
        QVERIFY(designer().doc().items.isEmpty());
        settle();
        QTRY_COMPARE(focused(), u"إضافة منتج"_s);
        goes(Qt::Key_Backtab, "طريقة الدفع");
        press("إضافة منتج");
        QCOMPARE(focused(), u"اسم المنتج 1"_s);
    }

    void rowBeingTypedInKeepsItsPlace()
    {
        open("shop", manyItems());
        focus("السعر 2");
        QQuickItem *field = focusItem();
        const QQuickItem *other = control("السعر 1");
        key(Qt::Key_Home);
        type("98");
        QCOMPARE(field->property("text").toString(), u"98250"_s);
        enter("shop"); // a poll
        designer().addItem(); // none can be added
        QCOMPARE(field->property("cursorPosition").toInt(), 2);
        QCOMPARE(focusItem(), field);
        QCOMPARE(control("السعر 1"), other);
        QElapsedTimer time;
        time.start();
        for (int i = 0; i < 10; ++i) {
            key(i % 2 ? Qt::Key_Backspace : Qt::Key_1);
            settle(); // with the picture of it
        }
        QVERIFY2(time.elapsed() < 2500, "a keystroke with 300 items takes too long");
    }

    void documentOutlivesTheWindow()
    {
        open("shop");
        focus("العميل");
        type("k");
        press("إضافة منتج");
        m_stage->server().answerWith([](const HttpRequest &, QTcpSocket &) {}); // the print stays under way
        press("اطبع الورقة");
        QTRY_VERIFY(find("جارٍ الإرسال…"));
        m_window->close();
        m_clock.advance(15s);
        QTRY_VERIFY(!designer().isPrinting());
        QCOMPARE(agent().toast(), u"تعذر الطباعة. تحقق من اتصال الطابعة"_s);
        open("shop");
        QCOMPARE(control("العميل")->property("text").toString(), u"k"_s);
        QCOMPARE(count("السعر", "placeholder"), 2);
        QTRY_VERIFY(find("اطبع الورقة"));
    }

    void headerActions()
    {
        open("shop");
        focus("العميل");
        type("k");
        QVERIFY(!find("تراجع"));
        press("بيانات تجريبية");
        QCOMPARE(designer().doc().json(), DesignerDoc::sample().json());
        settle();
        press("تراجع");
        QCOMPARE(designer().doc().customer, u"k"_s);
        QCOMPARE(focused(), u"بيانات تجريبية"_s);
        press("إعادة ضبط");
        QCOMPARE(designer().doc().json(), DesignerDoc().json());
    }

    void printButtonIsAlwaysInReach()
    {
        for (const auto &[width, textScale, isBeside] :
            {std::tuple{1020, 1.0, true}, {1600, 1.0, true}, {800, 1.0, false}, {1020, 1.5, false}}) {
            m_window->appearance().overrideTextScale(textScale);
            open("shop", manyItems());
            window()->resize(width, 760);
            settle();
            auto *scroller = find("designer", "page")->property("view").value<QQuickItem *>();
            for (const double part : {0.0, 0.3, 1.0}) {
                const double range = scroller->property("contentHeight").toDouble() - scroller->height();
                scroller->setProperty("contentY", part * range);
                settle();
                QVERIFY(isInSight(find("اطبع الورقة")));
                QCOMPARE(isInSight(find("معاينة الورقة", "title")), isBeside || part == 1.0);
            }
            m_window->close();
        }
    }

    void paperScrollsByKeys()
    {
        open("shop", manyItems());
        focus("اطبع الورقة");
        key(Qt::Key_Backtab);
        const auto place = [list = focusItem()] { return list->property("contentY").toDouble(); };
        const double before = place();
        key(Qt::Key_Down);
        QVERIFY(place() > before);
        key(Qt::Key_Up, {}, 2); // not beyond its beginning
        QCOMPARE(place(), before);
    }

    void nothingIsSentWithoutAPrinter()
    {
        open("offline");
        QVERIFY(find("لا توجد طابعة متصلة حاليًا. وصّل الطابعة ثم افحص الاتصال من «نظرة عامة»."));
        QVERIFY(!find("الطابعة", "name"));
        click(find("اطبع الورقة"));
        settle();
        QCOMPARE(sent("/admin/designer/print"), 0);
        enter("shop");
        QTRY_VERIFY(find("الطابعة", "name"));
        click(find("اطبع الورقة"));
        QTRY_COMPARE(sent("/admin/designer/print"), 1);
        QTRY_VERIFY(!designer().isPrinting());
    }

private:
    void open(const char *situation, const std::optional<DesignerDoc> &doc = {})
    {
        WindowTest::open(situation, "designer");
        window()->resize(1020, 760);
        if (doc)
            designer().setDoc(*doc);
        settle();
    }
    DesignerPresenter &designer() { return m_window->designer(); }
};

ZEMRAK_TEST(designer, DesignerPageTest, QApplication)
#include "tst_designer.moc"
