// What the window goes by, without its scene: pages, measures, placement, and the plugin that is not there.
#include "app/windowloader.h"
#include "base/clock.h"
#include "demo/stage.h"
#include "platform/none/inert.h"
#include "support/testmain.h"
#include "ui/kit/appearance.h"
#include "ui/kit/icons.h"
#include "ui/window/shell/mainview.h"
#include "ui/window/shell/pages.h"
#include "ui/window/shell/windowplacement.h"

#include <QApplication>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;

class ShellTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void knowsItsPages()
    {
        const QStringList ids{QStringLiteral("overview"), QStringLiteral("printers"), QStringLiteral("designer"),
            QStringLiteral("sites"), QStringLiteral("jobs"), QStringLiteral("alerts"), QStringLiteral("docs"),
            QStringLiteral("settings")};
        Pages pages;
        QCOMPARE(pages.rowCount(), ids.size());
        for (int row = 0; row < ids.size(); ++row) {
            const QString id = ids.at(row);
            QCOMPARE(pages.index(row).data(Pages::PageIdRole).toString(), id);
            QCOMPARE(pageInfo(*pageFromId(id)).id, id);
            QVERIFY(findIcon(pages.icon(id)));
            QCOMPARE(pages.tint(id).size(), 2);
            QVERIFY(QFile::exists(QStringLiteral(":") + pages.source(id).path()));
        }
        QVERIFY(!pageFromId(u"Overview"));
        QVERIFY(pages.title({}).isEmpty());
    }

    void measuresTheContent()
    {
        SystemClock clock;
        Stage stage(clock);
        Appearance appearance(std::make_unique<none::NoAppearanceSettings>());
        appearance.overrideTextScale(1);
        MainView view(stage.agent(), stage.defaults(), appearance);
        QCOMPARE(view.winSize(), QSizeF(1000, 720));
        QCOMPARE(view.contentWidth(), 696.0);
        QCOMPARE(view.ringScale(), 1.0);
        QTest::ignoreMessage(QtWarningMsg, "There is no page \"nowhere\"");
        view.setPage(QStringLiteral("nowhere"));
        QCOMPARE(view.page(), QStringLiteral("overview"));
    }

    void keepsThePlace_data()
    {
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<QRect>("fitting");
        QTest::newRow("inside") << QRect(100, 50, 800, 600) << QRect(100, 50, 800, 600);
        QTest::newRow("too large") << QRect(0, 0, 5000, 5000) << QRect(0, 0, 1280, 1000);
        QTest::newRow("on the second") << QRect(1300, 10, 600, 500) << QRect(1300, 10, 600, 500);
        QTest::newRow("half out") << QRect(-300, 800, 700, 500) << QRect(0, 500, 700, 500);
        QTest::newRow("screen gone") << QRect(9000, 9000, 700, 500) << QRect(580, 500, 700, 500);
    }

    void keepsThePlace()
    {
        QFETCH(QRect, frame);
        QFETCH(QRect, fitting);
        QCOMPARE(fitted(frame, {QRect(0, 0, 1280, 1000), QRect(1280, 0, 800, 600)}), fitting);
        const WindowPlacement placement{frame, true};
        QCOMPARE(WindowPlacement::fromStrings(placement.toStrings()), placement);
    }

    void distrustsAStoredPlace()
    {
        for (const char *text : {"", "1,2,3,4", "a,2,3,4,normal", "1,2,0,4,normal", "1,2,-3,4,normal",
                 "1,2,3,999999999,normal", "1,2,3,4,normal,5"})
            QVERIFY2(!WindowPlacement::fromStrings(QString::fromLatin1(text).split(u',')), text);
    }

    void doesWithoutTheWindow()
    {
        SystemClock clock;
        Stage stage(clock);
        WindowLoader loader(ApplicationBundle(QStringLiteral("/nowhere")), stage.services());
        for (int i = 0; i < 2; ++i) {
            QTest::ignoreMessage(
                QtWarningMsg, QRegularExpression(QStringLiteral("^The window cannot be shown: .*libzemrak-window")));
            loader.show();
            QVERIFY(!loader.isOpen());
        }
        loader.close();
    }
};

ZEMRAK_TEST(shell, ShellTest, QApplication)
#include "tst_shell.moc"
