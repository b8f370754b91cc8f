// The page of the receipt designer: what keys and presses do there, and what must not lose its place.
#include "support/testmain.h"
#include "ui/window/windowtest.h"

#include <QApplication>
#include <QElapsedTimer>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

DesignerDoc manyItems()
{
    DesignerDoc doc = DesignerDoc::sample();
    for (int i = 3; i < 300; ++i)
        doc.items.append(
            {.name = QStringLiteral("صنف %1").arg(i + 1), .qty = QStringLiteral("2"), .price = QString::number(i)});
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
        const QList<std::pair<const char *, QString DesignerDoc::*>> fields{{"العملة", &DesignerDoc::currency},
            {"اسم المنشأة", &DesignerDoc::businessName}, {"وصف مختصر", &DesignerDoc::subtitle},
            {"العنوان", &DesignerDoc::address}, {"الهاتف", &DesignerDoc::phone},
            {"الرقم الضريبي", &DesignerDoc::taxNumber}, {"عنوان الورقة", &DesignerDoc::title},
            {"رقم الفاتورة", &DesignerDoc::receiptNo}, {"العميل", &DesignerDoc::customer},
            {"الموظف / الكاشير", &DesignerDoc::cashier}, {"طريقة الدفع", &DesignerDoc::payment},
            {"الخصم (مبلغ)", &DesignerDoc::discount}, {"ضريبة القيمة المضافة %", &DesignerDoc::vatPercent},
            {"محتوى الـ QR", &DesignerDoc::qrData}, {"بيانات الباركود", &DesignerDoc::barcodeData},
            {"عبارة التذييل", &DesignerDoc::footer}, {"ملاحظة إضافية", &DesignerDoc::footerNote}};
        QString typed = QStringLiteral("a");
        for (const auto &[name, field] : fields) {
            focus(name);
            QTest::keySequence(window(), QKeySequence::SelectAll);
            QTest::keyClick(window(), typed.at(0).toLatin1());
            QVERIFY2(designer().doc().*field == typed, name);
            typed = QChar(typed.at(0).unicode() + 1);
        }
        const QList<std::pair<const char *, bool DesignerDoc::*>> switches{{"طباعة QR", &DesignerDoc::qrEnabled},
            {"طباعة باركود", &DesignerDoc::barcodeEnabled}, {"قص الورقة بعد الطباعة", &DesignerDoc::cut},
            {"فتح درج النقود", &DesignerDoc::drawer}, {"صفير بعد الطباعة", &DesignerDoc::beep}};
        for (const auto &[name, field] : switches) {
            const bool before = designer().doc().*field;
            itemsWith(root(), "text", QString::fromUtf8(name)).last()->forceActiveFocus(Qt::TabFocusReason);
            QTest::keyClick(window(), Qt::Key_Space);
            QVERIFY2(designer().doc().*field != before, name);
        }
    }

    void keyboardGoesThroughTheProducts()
    {
        open("shop");
        designer().setDoc(manyItems());
        focus("طريقة الدفع");
        QTest::keyClick(window(), Qt::Key_Tab);
        QCOMPARE(focused(), QStringLiteral("اسم المنتج 1"));
        QTest::keyClick(window(), Qt::Key_Backtab);
        QCOMPARE(focused(), QStringLiteral("طريقة الدفع"));
        QTest::keyClick(window(), Qt::Key_Tab);
        for (int row = 1; row < 40; ++row) { // far beyond what was in sight
            for (const char *next : {"الكمية", "السعر"}) {
                QTest::keyClick(window(), Qt::Key_Tab);
                QCOMPARE(focused(), QStringLiteral("%1 %2").arg(QString::fromUtf8(next)).arg(row));
            }
            QTest::keyClick(window(), Qt::Key_Tab); // its bin
            QTest::keyClick(window(), Qt::Key_Tab);
            QCOMPARE(focused(), QStringLiteral("اسم المنتج %1").arg(row + 1));
            QVERIFY(isInSight(window()->activeFocusItem()));
        }
        QVERIFY(itemsWith(root(), "placeholder", QStringLiteral("السعر")).size() < 60); // only rows in sight exist
        QTest::keyClick(window(), Qt::Key_Backtab);
        QTest::keyClick(window(), Qt::Key_Backtab);
        QCOMPARE(focused(), QStringLiteral("السعر 39"));
        QTest::keyClick(window(), Qt::Key_Return);
        QCOMPARE(focused(), QStringLiteral("اسم المنتج 40"));
        QTest::keyClick(window(), Qt::Key_Tab);
        QTest::keyClick(window(), Qt::Key_Tab);
        QTest::keyClick(window(), Qt::Key_Tab); // to its bin
        QTest::keyClick(window(), Qt::Key_Space);
        QCOMPARE(designer().doc().items.size(), 299);
        focus("الخصم (مبلغ)");
        QTest::keyClick(window(), Qt::Key_Backtab);
        QCOMPARE(focused(), QStringLiteral("إضافة منتج"));
        QTest::keyClick(window(), Qt::Key_Backtab);
        QCOMPARE(focused(), QStringLiteral("حذف"));
        QVERIFY(isInSight(window()->activeFocusItem()));
        QTest::keyClick(window(), Qt::Key_Tab);
        QCOMPARE(focused(), QStringLiteral("إضافة منتج"));
    }

    void newProductIsTypedAtOnce()
    {
        open("shop");
        click("إضافة منتج");
        QCOMPARE(focused(), QStringLiteral("اسم المنتج 2"));
        QTest::keyClick(window(), 'x');
        QTest::keyClick(window(), Qt::Key_Return);
        QTest::keyClick(window(), '2');
        QTest::keyClick(window(), Qt::Key_Return);
        QTest::keyClick(window(), '7');
        QCOMPARE(designer().doc().items.at(1).qty, QStringLiteral("12"));
        QCOMPARE(designer().doc().items.at(1).price, QStringLiteral("7"));
        for (int i = 0; i < 30; ++i) {
            QTest::keyClick(window(), Qt::Key_Return); // a new one each time, and in sight
            QCOMPARE(focused(), QStringLiteral("اسم المنتج %1").arg(i + 3));
            QTest::keyClick(window(), 'y');
            QTest::keyClick(window(), Qt::Key_Return);
            QTest::keyClick(window(), Qt::Key_Return);
            settle();
            QTRY_VERIFY(isInSight(window()->activeFocusItem()));
        }
        QCOMPARE(designer().doc().items.size(), 32);
        QTest::keyClick(window(), Qt::Key_Tab); // to the bin of the last one
        QTest::keyClick(window(), Qt::Key_Space);
        QCOMPARE(designer().doc().items.size(), 31);
        QVERIFY(!focused().isEmpty()); // the keyboard is not lost with the row
    }

    void lastProductGoesWithoutTheKeyboard()
    {
        open("shop");
        focus("السعر 1");
        QTest::keyClick(window(), Qt::Key_Tab);
        QTest::keyClick(window(), Qt::Key_Space);
        QVERIFY(designer().doc().items.isEmpty());
        settle();
        QTRY_COMPARE(focused(), QStringLiteral("إضافة منتج"));
        QTest::keyClick(window(), Qt::Key_Backtab);
        QCOMPARE(focused(), QStringLiteral("طريقة الدفع"));
        click("إضافة منتج");
        QCOMPARE(focused(), QStringLiteral("اسم المنتج 1"));
    }

    void rowBeingTypedInKeepsItsPlace()
    {
        open("shop");
        designer().setDoc(manyItems());
        settle();
        focus("السعر 2");
        QQuickItem *field = window()->activeFocusItem();
        QQuickItem *other = itemWith(root(), "name", QStringLiteral("السعر 1"));
        QTest::keyClick(window(), Qt::Key_Home);
        QTest::keyClick(window(), '9');
        QTest::keyClick(window(), '8');
        QCOMPARE(field->property("text").toString(), QStringLiteral("98250"));
        QCOMPARE(field->property("cursorPosition").toInt(), 2);
        QCOMPARE(window()->activeFocusItem(), field);
        QVERIFY(m_stage->enter(QStringLiteral("shop"))); // a poll
        designer().addItem(); // none can be added
        QCOMPARE(itemWith(root(), "name", QStringLiteral("السعر 1")), other);
        QCOMPARE(field->property("cursorPosition").toInt(), 2);
    }

    void keystrokeWithManyItems()
    {
        open("shop");
        designer().setDoc(manyItems());
        settle();
        focus("السعر 2");
        settle();
        QElapsedTimer time;
        time.start();
        constexpr int keys = 20;
        for (int i = 0; i < keys; ++i) {
            QTest::keyClick(window(), i % 2 ? Qt::Key_Backspace : Qt::Key_1);
            settle(); // with the picture of it
        }
        const double each = double(time.nsecsElapsed()) / 1e6 / keys;
        qInfo("one keystroke with 300 items: %.1f ms", each);
        QVERIFY(each < 250);
    }

    void documentOutlivesTheWindow()
    {
        open("shop");
        focus("العميل");
        QTest::keyClick(window(), 'k');
        click("إضافة منتج");
        m_stage->server().answerWith([](const HttpRequest &, QTcpSocket &) {}); // the print stays under way
        click("اطبع الورقة");
        QTRY_VERIFY(!itemsWith(root(), "text", QStringLiteral("جارٍ الإرسال…")).isEmpty());
        m_window->close();
        m_clock.advance(15s);
        QTRY_VERIFY(!designer().isPrinting());
        QCOMPARE(m_stage->agent().toast(), QStringLiteral("تعذر الطباعة. تحقق من اتصال الطابعة"));
        open("shop");
        QCOMPARE(itemWith(root(), "name", QStringLiteral("العميل"))->property("text").toString(), QStringLiteral("k"));
        QCOMPARE(itemsWith(root(), "placeholder", QStringLiteral("السعر")).size(), 2);
        QTRY_VERIFY(!itemsWith(root(), "text", QStringLiteral("اطبع الورقة")).isEmpty());
    }

    void headerActions()
    {
        open("shop");
        focus("العميل");
        QTest::keyClick(window(), 'k');
        QVERIFY(itemsWith(root(), "text", QStringLiteral("تراجع")).isEmpty());
        click("بيانات تجريبية");
        QCOMPARE(designer().doc().json(), DesignerDoc::sample().json());
        settle();
        click("تراجع");
        QCOMPARE(designer().doc().customer, QStringLiteral("k"));
        QCOMPARE(focused(), QStringLiteral("بيانات تجريبية"));
        click("إعادة ضبط");
        QCOMPARE(designer().doc().json(), DesignerDoc().json());
    }

    void printButtonIsAlwaysInReach_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<double>("textScale");
        QTest::addColumn<bool>("beside");
        QTest::newRow("usual") << 1020 << 1.0 << true;
        QTest::newRow("wide") << 1600 << 1.0 << true;
        QTest::newRow("narrow") << 800 << 1.0 << false;
        QTest::newRow("large letters") << 1020 << 1.5 << false;
    }
    void printButtonIsAlwaysInReach()
    {
        QFETCH(int, width);
        QFETCH(double, textScale);
        QFETCH(bool, beside);
        m_window->appearance().overrideTextScale(textScale);
        open("shop");
        window()->resize(width, 760);
        designer().setDoc(manyItems());
        settle();
        auto *view = itemWith(root(), "page", QStringLiteral("designer"))->property("view").value<QQuickItem *>();
        QVERIFY(view);
        for (const double part : {0.0, 0.3, 1.0}) {
            const double range = view->property("contentHeight").toDouble() - view->height();
            view->setProperty("contentY", part * range);
            settle();
            const QList<QQuickItem *> buttons = itemsWith(root(), "text", QStringLiteral("اطبع الورقة"));
            QVERIFY(!buttons.isEmpty() && isInSight(buttons.first()));
            QQuickItem *heading = itemWith(root(), "title", QStringLiteral("معاينة الورقة"));
            QCOMPARE(isInSight(heading), beside || part == 1.0);
        }
    }

    void paperScrollsByKeys()
    {
        open("shop");
        designer().setDoc(manyItems());
        settle();
        QQuickItem *print = itemWith(root(), "text", QStringLiteral("اطبع الورقة"));
        print->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(window(), Qt::Key_Backtab);
        QQuickItem *list = window()->activeFocusItem();
        const double before = list->property("contentY").toDouble();
        QTest::keyClick(window(), Qt::Key_Down);
        QVERIFY(list->property("contentY").toDouble() > before);
        QTest::keyClick(window(), Qt::Key_Up);
        QTest::keyClick(window(), Qt::Key_Up); // not beyond its beginning
        QCOMPARE(list->property("contentY").toDouble(), before);
    }

    void nothingIsSentWithoutAPrinter()
    {
        open("offline");
        QVERIFY(!itemsWith(
            root(), "text", QStringLiteral("لا توجد طابعة متصلة حاليًا. وصّل الطابعة ثم افحص الاتصال من «نظرة عامة»."))
                     .isEmpty());
        QVERIFY(itemsWith(root(), "name", QStringLiteral("الطابعة")).isEmpty());
        click("اطبع الورقة");
        settle();
        QVERIFY(m_stage->server().requestsTo("/admin/designer/print").isEmpty());
        QVERIFY(m_stage->enter(QStringLiteral("shop")));
        QTRY_VERIFY(!itemsWith(root(), "name", QStringLiteral("الطابعة")).isEmpty());
        click("اطبع الورقة");
        QTRY_COMPARE(m_stage->server().requestsTo("/admin/designer/print").size(), 1);
        QTRY_VERIFY(!designer().isPrinting());
    }

private:
    void open(const char *situation)
    {
        WindowTest::open(situation, "designer");
        window()->resize(1020, 760);
        settle();
    }
    void focus(const char *name) { focus(QString::fromUtf8(name)); }
    void focus(const QString &name)
    {
        const QList<QQuickItem *> found = itemsWith(root(), "name", name);
        QVERIFY2(!found.isEmpty(), qPrintable(name));
        found.first()->forceActiveFocus(Qt::TabFocusReason);
        QCOMPARE(window()->activeFocusItem(), found.first());
    }
    // The name of what has the keyboard.
    QString focused()
    {
        const QQuickItem *item = window()->activeFocusItem();
        const QString name = item ? item->property("name").toString() : QString();
        return name.isEmpty() && item ? item->property("text").toString() : name;
    }
    void click(const char *text)
    {
        const QList<QQuickItem *> found = itemsWith(root(), "text", QString::fromUtf8(text));
        QVERIFY2(!found.isEmpty(), text);
        found.first()->forceActiveFocus(Qt::TabFocusReason); // brings it in sight
        settle();
        QTest::mouseClick(window(), Qt::LeftButton, {}, centreOf(found.first()));
    }
    static QPointF centre(QQuickItem *item) { return item->mapToScene(item->boundingRect().center()); }
    bool isInSight(QQuickItem *item)
    {
        return QRectF(0, 0, window()->width(), window()->height())
            .contains(item->mapRectToScene(item->boundingRect()).intersected({-1e6, -1e6, 2e6, 2e6}).center());
    }
    DesignerPresenter &designer() { return m_window->designer(); }
};

ZEMRAK_TEST(designer, DesignerPageTest, QApplication)
#include "tst_designer.moc"
