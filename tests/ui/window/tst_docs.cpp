// The page of the guide: what its tabs, buttons and search do in the window.
#include "demo/stage.h"
#include "guide/doctabs.h"
#include "support/warnings.h"
#include "support/manualclock.h"
#include "support/testmain.h"
#include "ui/window/shell/qmlwindow.h"
#include "ui/window/shell/uicontext.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace zemrak;
using namespace zemrak::test;

namespace {

QList<QQuickItem *> all(QQuickItem *item, const char *property, const QVariant &value)
{
    QList<QQuickItem *> found;
    if (item->isVisible() && item->property(property) == value)
        found.append(item);
    for (QQuickItem *child : item->childItems())
        found << all(child, property, value);
    return found;
}

} // namespace

class DocsPageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_stage = std::make_unique<Stage>(m_clock);
        m_window = std::make_unique<QmlWindow>(m_stage->services());
        m_window->appearance().overrideReducedMotion(true);
        m_window->appearance().overrideTextScale(1);
        (void)m_warnings.take();
        QVERIFY(m_stage->enter(QStringLiteral("shop")));
        m_window->show({});
        QVERIFY(m_window->isOpen());
        window()->resize(1020, 760);
        QVERIFY(QTest::qWaitForWindowActive(window()));
        UiContext::of(m_window->engine()).mainView().setPage(QStringLiteral("docs"));
        settle();
    }
    void cleanup()
    {
        m_window.reset();
        m_stage.reset();
        QCOMPARE(m_warnings.take(), QStringList());
    }

    void everyTabIsReachedByItsNameAndByTheKeyboard()
    {
        for (const DocTab &tab : docTabs()) {
            click(only("text", tab.title));
            QCOMPARE(docs().selected(), tab.id);
            settle();
            QCOMPARE(all(page(), "kind", QStringLiteral("code")).size(),
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
        QCOMPARE(all(page(), "__copied", true).size(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(all(page(), "__copied", true).size(), 0, 3000);
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
    QQuickWindow *window() { return m_window->window(); }
    DocsPresenter &docs() { return *UiContext::of(m_window->engine()).presenters().docs(); }
    QQuickItem *page() { return only("page", QStringLiteral("docs")); }
    void settle()
    {
        (void)window()->grabWindow();
        QCoreApplication::processEvents();
        (void)window()->grabWindow();
    }
    /// The first visible item whose property is `value`.
    QQuickItem *only(const char *property, const QVariant &value)
    {
        return all(window()->contentItem(), property, value).value(0);
    }
    void click(QQuickItem *item)
    {
        QVERIFY(item);
        QVERIFY(QMetaObject::invokeMethod(item, "forceActiveFocus"));
        QVERIFY(QMetaObject::invokeMethod(item, "clicked"));
    }

    Warnings m_warnings;
    ManualClock m_clock;
    std::unique_ptr<Stage> m_stage;
    std::unique_ptr<QmlWindow> m_window;
};

ZEMRAK_TEST(docs, DocsPageTest, QApplication)

#include "tst_docs.moc"
