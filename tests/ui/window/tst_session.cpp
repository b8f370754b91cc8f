// What stands behind an open window, without its scene: what a poll changes, and what sheets leave when they go.
#include "platform/none/inert.h"
#include "support/application.h"
#include "support/testmain.h"
#include "ui/kit/appearance.h"
#include "ui/window/shell/windowsession.h"

#include <QApplication>
#include <QJsonArray>
#include <QTimer>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

const QByteArray savePath = "/admin/profile";

struct SessionApplication : Application
{
    Appearance appearance{std::make_unique<none::NoAppearanceSettings>()};
    ProfileSaver saver{agent.commands()};

    SessionApplication() { defaults.setBoolean(QLatin1String("onboardingDone"), true); }
    MainWindowServices services() { return {agent, defaults, clock, {}}; }
    QString printerId(int row) const { return agent.state()->printers.at(row).id; }
};

} // namespace

class SessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A poll that brings nothing new changes no row and tells of nothing, and no timer runs while the window is hidden.
    void pollsThatBringNothingNew()
    {
        SessionApplication app;
        WindowSession window(app.services(), app.appearance, app.saver);
        QVERIFY(window.printers()->printers()->count() == 0 && window.overview()->heroColor() == QLatin1String("gRed"));
        app.poll();
        QCOMPARE(window.printers()->printers()->count(), int(app.state[QLatin1String("printers")].toArray().size()));
        QCOMPARE(window.jobs()->count(), int(app.state[QLatin1String("recentJobs")].toArray().size()));
        QCOMPARE(window.sites()->origins()->count(), int(app.state[QLatin1String("allowedOrigins")].toArray().size()));
        QTRY_VERIFY(window.alerts()->alerts()->count() > 0);
        QVERIFY(window.printers()->printers()->count() > 0 && window.jobs()->count() > 0);

        QList<QSignalSpy *> quiet;
        for (QAbstractItemModel *list : {static_cast<QAbstractItemModel *>(window.printers()->printers()),
                 static_cast<QAbstractItemModel *>(window.jobs()),
                 static_cast<QAbstractItemModel *>(window.sites()->origins()),
                 static_cast<QAbstractItemModel *>(window.alerts()->alerts())}) {
            quiet.append(new QSignalSpy(list, &QAbstractItemModel::dataChanged));
            quiet.append(new QSignalSpy(list, &QAbstractItemModel::rowsInserted));
            quiet.append(new QSignalSpy(list, &QAbstractItemModel::rowsRemoved));
        }
        quiet.append(new QSignalSpy(window.overview(), &OverviewPresenter::changed));
        quiet.append(new QSignalSpy(window.settings(), &SettingsPresenter::changed));
        app.server.forget();
        app.clock.advance(1s);
        app.agent.refresh();
        QTRY_COMPARE(app.sentTo("/admin/state"), 1);
        app.agent.commands().setAutoApprove(true); // is answered after the poll
        QTRY_VERIFY(!app.agent.toast().isEmpty());
        for (QSignalSpy *spy : std::as_const(quiet))
            QVERIFY2(spy->isEmpty(), spy->signal().constData());
        qDeleteAll(quiet);
    }

    void shownTimesMoveWhileTheWindowIsOpen()
    {
        SessionApplication app;
        QJsonArray jobs{app.state[QLatin1String("recentJobs")].toArray().first()};
        QJsonObject job = jobs.first().toObject();
        job.insert(QStringLiteral("updatedAt"), double(app.clock.wallTime() - 1000));
        app.state.insert(QStringLiteral("recentJobs"), QJsonArray{job});
        WindowSession window(app.services(), app.appearance, app.saver);
        app.poll();
        const qsizetype others = app.clock.pending();
        const auto time = [&window] { return window.jobs()->index(0, 0).data(JobListModel::TimeRole).toString(); };
        QCOMPARE(time(), QStringLiteral("قبل ثانية واحدة"));
        window.clock()->setActive(true);
        app.clock.advance(1s);
        QCOMPARE(time(), QStringLiteral("قبل ثانيتين"));
        window.clock()->setActive(false);
        QCOMPARE(app.clock.pending(), others);
    }

    void sheetsComeAndGo()
    {
        SessionApplication app;
        app.poll();
        auto window = std::make_unique<WindowSession>(app.services(), app.appearance, app.saver);
        window->view()->edit(QStringLiteral("no such printer"));
        QVERIFY(!window->profile());
        window->view()->edit(app.printerId(0));
        app.clock.advance(0ms);
        window->profile()->setAlias(QStringLiteral("one"));
        window->view()->edit(app.printerId(1)); // what was left for the first is sent
        QTRY_COMPARE(app.sentTo(savePath), 1);
        QCOMPARE(window->profile()->printerId(), app.printerId(1));
        app.clock.advance(0ms);
        window->profile()->setAlias(QStringLiteral("two"));
        window->view()->setAdding(true);
        QVERIFY(window->addPrinter());
        window->view()->setAdding(false);
        QVERIFY(!window->addPrinter());
        window->view()->setShowOnboarding(true);
        window->wizard()->skip();
        window->view()->setShowOnboarding(false);
        QVERIFY(!window->wizard());
        window->view()->setShowOnboarding(true); // from the start
        QCOMPARE(window->wizard()->step(), 0);
        window.reset(); // with sheets open
        QTRY_COMPARE(app.sentTo(savePath), 2);
        QVERIFY(app.server.requestsTo(savePath).last().body.contains("\"two\""));
    }

    // The state may have been read before the service had the change.
    void settingsThatAreBeingSavedAreShownAgain()
    {
        SessionApplication app;
        app.poll();
        app.held = savePath;
        WindowSession window(app.services(), app.appearance, app.saver);
        window.view()->edit(app.printerId(0));
        app.clock.advance(0ms);
        window.profile()->setAlias(QStringLiteral("new"));
        window.view()->endEditing();
        QVERIFY(!window.profile());
        window.view()->edit(app.printerId(0));
        QCOMPARE(window.profile()->alias(), QStringLiteral("new"));
    }

    void theEndWaitsForTheLastSave()
    {
        SessionApplication app;
        app.held = savePath;
        const auto save = [&app](const char *alias) {
            app.saver.save(QStringLiteral("p"), {{QStringLiteral("alias"), QString::fromLatin1(alias)}}, nullptr, {});
        };
        save("last");
        QTRY_VERIFY(app.unanswered);
        QTimer::singleShot(0, this, [&app] { app.unanswered->write(HttpServer::response("{}")); });
        app.saver.finish(app.clock, 1s);
        QVERIFY(app.saver.isIdle());

        save("never answered");
        QTimer::singleShot(20, this, [&app] { app.clock.advance(1s); });
        app.saver.finish(app.clock, 1s); // comes back all the same
        QVERIFY(!app.saver.isIdle());
    }
};

ZEMRAK_TEST(session, SessionTest, QApplication)
#include "tst_session.moc"
