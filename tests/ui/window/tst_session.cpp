// What stands behind an open window, without its scene: what a poll changes, and what sheets leave when they go.
#include "support/testmain.h"
#include "ui/window/windowtest.h"

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class SessionTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    // A poll that brings nothing new changes no row and tells of nothing.
    void pollsThatBringNothingNew()
    {
        ProfileSaver saver(agent().commands());
        WindowSession window(m_stage->services(), m_window->appearance(), saver);
        const QList<QAbstractItemModel *> lists{
            window.printers()->printers(), window.jobs(), window.sites()->origins(), window.alerts()->alerts()};
        QVERIFY(lists.first()->rowCount() == 0 && window.overview()->heroColor() == "gRed"_L1);
        enter("shop");
        for (const QAbstractItemModel *list : lists)
            QTRY_VERIFY(list->rowCount() > 0);
        std::vector<std::unique_ptr<QSignalSpy>> quiet;
        for (QAbstractItemModel *list : lists) {
            quiet.push_back(std::make_unique<QSignalSpy>(list, &QAbstractItemModel::dataChanged));
            quiet.push_back(std::make_unique<QSignalSpy>(list, &QAbstractItemModel::rowsInserted));
            quiet.push_back(std::make_unique<QSignalSpy>(list, &QAbstractItemModel::rowsRemoved));
        }
        quiet.push_back(std::make_unique<QSignalSpy>(window.overview(), &OverviewPresenter::changed));
        quiet.push_back(std::make_unique<QSignalSpy>(window.settings(), &SettingsPresenter::changed));
        m_clock.advance(1s);
        enter("shop");
        agent().commands().setAutoApprove(true); // is answered after the poll
        QTRY_VERIFY(!agent().toast().isEmpty());
        for (const auto &spy : quiet)
            QVERIFY2(spy->isEmpty(), spy->signal().constData());
    }

    void sheetsComeAndGo()
    {
        enter("shop", {{"/admin/profile", "{}"}});
        ProfileSaver saver(agent().commands());
        auto window = std::make_unique<WindowSession>(m_stage->services(), m_window->appearance(), saver);
        MainView &shown = *window->view();
        const auto edit = [&](const QString &id, const QString &alias) {
            shown.edit(id);
            QCOMPARE(window->profile()->printerId(), id);
            m_clock.advance(0ms);
            window->profile()->setAlias(alias);
        };
        shown.edit(u"no such printer"_s);
        QVERIFY(!window->profile());
        edit(u"cups-kitchen"_s, u"one"_s);
        edit(u"net-1"_s, u"two"_s); // what was left for the first is sent
        QTRY_COMPARE(sent("/admin/profile"), 1);
        for (const bool isAdding : {true, false}) {
            shown.setAdding(isAdding);
            QCOMPARE(window->addPrinter() != nullptr, isAdding);
        }
        shown.setShowOnboarding(true);
        window->wizard()->skip();
        shown.setShowOnboarding(false);
        QVERIFY(!window->wizard());
        shown.setShowOnboarding(true); // from the start
        QCOMPARE(window->wizard()->step(), 0);
        window.reset(); // with sheets open
        QTRY_COMPARE(sent("/admin/profile"), 2);
        QVERIFY(body("/admin/profile").contains("\"two\""));
    }
};

ZEMRAK_TEST(session, SessionTest, QApplication)
#include "tst_session.moc"
