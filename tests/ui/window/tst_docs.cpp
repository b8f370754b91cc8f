// The page of the guide: what its tabs, buttons and search do in the window.
#include "guide/doctabs.h"
#include "support/testmain.h"
#include "ui/window/windowtest.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>

#include <algorithm>

using namespace zemrak;
using namespace zemrak::test;

namespace {

} // namespace

class DocsPageTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        setUp();
        open("shop", "docs");
        window()->resize(1020, 760);
        settle();
    }

    void everyTabIsReachedByItsNameAndByTheKeyboard()
    {
        for (const DocTab &tab : docTabs()) {
            click(only("text", tab.title));
            QCOMPARE(docs().selected(), tab.id);
            settle();
            QCOMPARE(itemsWith(page(), "kind", QStringLiteral("code")).size(),
                std::ranges::count_if(
                    tab.blocks, [](const DocBlock &block) { return std::holds_alternative<DocCode>(block); }));
        }
        QTest::keyClick(window(), Qt::Key_Right); // back, against the reading direction
        QCOMPARE(docs().selected(), docTabs().at(10).id);
        QTest::keyClick(window(), Qt::Key_Left);
        QCOMPARE(docs().selected(), QStringLiteral("help"));
        // The tabs are one stop: from the field to the chosen one, and on from there to the blocks.
        only("placeholder", QStringLiteral("ابحث في التوثيق كله"))->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(window(), Qt::Key_Tab);
        QCOMPARE(window()->activeFocusItem()->property("text").toString(), QStringLiteral("حل المشاكل"));
        QTest::keyClick(window(), Qt::Key_Tab);
        QVERIFY(window()->activeFocusItem()->property("text").toString().startsWith(QStringLiteral("نسخ الجدول")));
    }

    void codeIsCopiedAsItStands()
    {
        docs().setSelected(QStringLiteral("node"));
        settle();
        const QString code = std::get<DocCode>(docTabs().at(4).blocks.at(1)).code;
        QGuiApplication::clipboard()->clear();
        click(only("text", QStringLiteral("نسخ")));
        QCOMPARE(QGuiApplication::clipboard()->text(), code);
        QCOMPARE(m_stage->agent().toast(), QStringLiteral("تم نسخ الكود"));
        QCOMPARE(itemsWith(page(), "__copied", true).size(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(itemsWith(page(), "__copied", true).size(), 0, 3000);
    }

    void tableIsCopiedAsMarkdown()
    {
        docs().setSelected(QStringLiteral("help"));
        settle();
        click(only("text", QStringLiteral("نسخ الجدول بصيغة Markdown")));
        QVERIFY(QGuiApplication::clipboard()->text().startsWith(QStringLiteral("| المشكلة | الحل |\n|---|---|\n| ")));
        QCOMPARE(m_stage->agent().toast(), QStringLiteral("تم نسخ الجدول"));
    }

    void searchLeadsToThePlace()
    {
        QQuickItem *field = only("placeholder", QStringLiteral("ابحث في التوثيق كله"));
        field->forceActiveFocus();
        field->setProperty("text", QStringLiteral("uncertain_after_restart"));
        settle();
        QTest::keyClick(window(), Qt::Key_Down);
        QTest::keyClick(window(), Qt::Key_Return);
        QCOMPARE(docs().selected(), QStringLiteral("status"));
        QCOMPARE(field->property("text").toString(), QString());
        QTRY_VERIFY(page()->property("contentY").toReal() > 300); // the second table, under the first
    }

    // How long is printed for whoever changes the page.
    void tabsChangeQuickly()
    {
        for (const DocTab &tab : docTabs()) {
            QElapsedTimer timer;
            timer.start();
            docs().setSelected(tab.id);
            (void)window()->grabWindow();
            qInfo().noquote() << tab.id << timer.elapsed() << "ms";
            QVERIFY(timer.elapsed() < 2000);
        }
    }

private:
    DocsPresenter &docs() { return *session().docs(); }
    QQuickItem *page() { return only("page", QStringLiteral("docs")); }
    /// The first visible item whose property is `value`.
    QQuickItem *only(const char *property, const QVariant &value) { return itemWith(root(), property, value); }
    void click(QQuickItem *item)
    {
        QVERIFY(item);
        QVERIFY(QMetaObject::invokeMethod(item, "forceActiveFocus"));
        QVERIFY(QMetaObject::invokeMethod(item, "clicked"));
    }
};

ZEMRAK_TEST(docs, DocsPageTest, QApplication)

#include "tst_docs.moc"
