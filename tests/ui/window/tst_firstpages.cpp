// The overview, the printers and the guide: what presses and keys do there.
#include "guide/doctabs.h"
#include "support/testmain.h"
#include "ui/window/windowtest.h"

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class FirstPagesTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void ringStartsACheckAndFillsWithIt()
    {
        open("shop", "overview");
        QQuickItem *ring = control("فحص الاتصال");
        pressAccessibly(ring);
        QVERIFY(agent().isScanning());
        QCOMPARE(ring->property("tone").value<QColor>(), QColor(0xc084fc));
        QVERIFY(control("طابعات متصلة")); // nothing else went away
        m_clock.advance(1300ms);
        QTRY_COMPARE(sent("/admin/scan"), 1);
        key(Qt::Key_Return); // while it runs, another press changes nothing
        QTRY_VERIFY((m_clock.advance(100ms), !agent().isScanning()));
        QCOMPARE(sent("/admin/scan"), 1);
        QTRY_COMPARE(ring->property("tone").value<QColor>(), QColor(0x16a34a));
    }

    void ringWindsOnFromStageToStage()
    {
        m_window->appearance().overrideReducedMotion(false);
        open("shop", "overview");
        for (int check = 0; check < 2; ++check) { // the second does not begin where the first ended
            pressAccessibly(control("فحص الاتصال"));
            const QQuickItem *ring = itemOfType(root(), "OverviewProgress");
            const auto shown = [ring] { return ring->property("shown").toDouble(); };
            QCOMPARE(shown(), 0.03);
            m_clock.advance(600ms);
            QCOMPARE(ring->property("progress").toDouble(), 0.22);
            QVERIFY(shown() < 0.22);
            QTRY_COMPARE(shown(), 0.22);
            m_clock.advance(700ms);
            QTRY_COMPARE(sent("/admin/scan"), check + 1);
            QTRY_VERIFY(m_clock.pending() > 0 && (m_clock.advance(1s), !agent().isScanning()));
        }
    }

    void countersLeadToTheirPages()
    {
        open("shop", "overview");
        for (const auto &[counter, page] :
            {std::pair{"طابعات متصلة", "printers"}, {"مواقع مصرّحة", "sites"}, {"وظائف اليوم", "jobs"}}) {
            view().setPage(u"overview"_s);
            pressAccessibly(control(counter));
            QCOMPARE(view().page(), QLatin1String(page));
        }
    }

    void cardOpensSettingsHoweverItIsPressed()
    {
        open("shop", "printers");
        QQuickItem *card = control("المطبخ");
        const std::function<void()> presses[] = {[&] { click(card); }, [&] { pressAccessibly(card); },
            [&] { key(Qt::Key_Space); }, [&] { key(Qt::Key_Return); }};
        for (const auto &pressIt : presses) {
            QTRY_VERIFY((card->forceActiveFocus(Qt::TabFocusReason), focusItem() == card)); // the sheet before has gone
            pressIt();
            QTRY_COMPARE(view().editing(), u"cups-kitchen"_s);
            view().endEditing();
        }
    }

    void testPrintIsAButtonOfItsOwn()
    {
        open("shop", "printers");
        QQuickItem *card = control("Bar"); // offline: it can be tried all the same
        QQuickItem *button = control("طباعة تجربة", card);
        click(button);
        click(button);
        QTRY_COMPARE(agent().toast(), u"تم إرسال طباعة التجربة"_s);
        QCOMPARE(sent("/admin/test"), 1);
        QVERIFY(body("/admin/test").contains("net-2"));
        m_clock.advance(Commands::oneWish);
        focus(card);
        key(Qt::Key_Tab);
        QCOMPARE(focusItem(), button);
        key(Qt::Key_Space);
        QTRY_COMPARE(sent("/admin/test"), 2);
        QVERIFY(view().editing().isEmpty());
        key(Qt::Key_Tab); // out of the list, which is one stop
        QVERIFY(focused() != u"BT-58");
    }

    void arrowsGoThroughALongList()
    {
        open("crowded", "printers");
        QVERIFY(count("طباعة تجربة") < 80); // of 500 cards, each with a button and its label
        focus(find("كاشير 1"));
        key(Qt::Key_Down, {}, 30);
        QQuickItem *card = focusItem();
        QCOMPARE(focused(), u"Bar 31"_s);
        QVERIFY(card->property("visualFocus").toBool());
        QVERIFY(QRectF(QPointF(), window()->size()).contains(card->mapRectToScene(card->boundingRect())));
        key(Qt::Key_Up);
        const QQuickItem *above = focusItem();
        QVERIFY(above != card);
        const double y = above->mapToScene({}).y();
        enter("crowded"); // a poll that changes nothing leaves both where they are
        QCOMPARE(focusItem(), above);
        QCOMPARE(above->mapToScene({}).y(), y);
    }

    void searchIsThereForLongListsOnly()
    {
        open("shop", "printers");
        QVERIFY(!find("ابحث عن طابعة", "placeholderText"));
        view().setPage(u"overview"_s);
        enter("crowded");
        view().setPage(u"printers"_s);
        QTRY_VERIFY(find("ابحث عن طابعة", "placeholderText"));
        QQuickItem *search = control("ابحث عن طابعة");
        search->setProperty("text", u"bt-58 4"_s);
        QTRY_VERIFY(find("BT-58 4") && !find("كاشير 1"));
        settle();
        focus(search);
        key(Qt::Key_Down);
        QCOMPARE(focusItem(), control("BT-58 4"));
        search->setProperty("text", u"zzz"_s);
        QTRY_VERIFY(!find("طباعة تجربة"));
        QVERIFY(search->isVisible()); // to empty it again
    }

    void printersCanBeAddedWithoutTheService()
    {
        open("stopped", "printers");
        press("إضافة طابعة");
        QVERIFY(view().isAdding());
    }

    void guideByItsTabs()
    {
        open("shop", "docs");
        QElapsedTimer timer;
        for (const DocTab &tab : docTabs()) {
            timer.start();
            click(find(tab.title.toUtf8()));
            settle();
            QVERIFY(timer.elapsed() < 4000);
            QCOMPARE(docs().selected(), tab.id);
            QCOMPARE(count("code", "kind"), std::ranges::count_if(tab.blocks, [](const DocBlock &block) {
                return std::holds_alternative<DocCode>(block);
            }));
        }
        key(Qt::Key_Right); // back, against the reading direction
        QCOMPARE(docs().selected(), docTabs().at(10).id);
        key(Qt::Key_Left);
        QCOMPARE(docs().selected(), u"help"_s);
        focus("ابحث في التوثيق كله"); // the tabs are one stop: from the field to the chosen one, and on to the blocks
        goes(Qt::Key_Tab, "حل المشاكل");
        key(Qt::Key_Tab);
        QVERIFY(focused().startsWith(u"نسخ الجدول"_s));
        key(Qt::Key_Space);
        QVERIFY(QGuiApplication::clipboard()->text().startsWith(u"| المشكلة | الحل |\n|---|---|\n| "_s));
        QCOMPARE(agent().toast(), u"تم نسخ الجدول"_s);
    }

    void guidesCodeIsCopiedAsItStands()
    {
        open("shop", "docs");
        docs().setSelected(u"node"_s);
        settle();
        press(find("نسخ"));
        QCOMPARE(QGuiApplication::clipboard()->text(), std::get<DocCode>(docTabs().at(4).blocks.at(1)).code);
        QCOMPARE(agent().toast(), u"تم نسخ الكود"_s);
        QCOMPARE(itemsWith(root(), "__copied", true).size(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(itemsWith(root(), "__copied", true).size(), 0, 3000);
    }

    void guidesSearchLeadsToThePlace()
    {
        open("shop", "docs");
        QQuickItem *field = control("ابحث في التوثيق كله");
        focus(field);
        field->setProperty("text", u"uncertain_after_restart"_s);
        settle();
        key(Qt::Key_Down);
        key(Qt::Key_Return);
        QCOMPARE(docs().selected(), u"status"_s);
        QCOMPARE(field->property("text").toString(), QString());
        QTRY_VERIFY(find("docs", "page")->property("contentY").toReal() > 300); // the second table, under the first
    }

private:
    DocsPresenter &docs() { return *session().docs(); }
};

ZEMRAK_TEST(firstpages, FirstPagesTest, QApplication)
#include "tst_firstpages.moc"
