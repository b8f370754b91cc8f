#include "platform/linux/linuxdesktop.h"
#include "platform/linux/settingsprograms.h"
#include "support/fakefilemanager.h"
#include "support/fakeportal.h"
#include "support/privatebus.h"
#include "support/testmain.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

using namespace zemrak;
using namespace zemrak::linux_;
using namespace zemrak::test;

namespace {

// Short: one of these portals never answers.
constexpr std::chrono::milliseconds patience{500};

struct Fixture
{
    std::unique_ptr<PrivateBus> bus = std::make_unique<PrivateBus>();
    BusClient client{bus->address()};
    QTemporaryDir folder;
    std::unique_ptr<LinuxDesktop> desktop = std::make_unique<LinuxDesktop>(client.bus, patience);
    std::unique_ptr<FakePortal> portal;
    std::unique_ptr<QObject> asker = std::make_unique<QObject>();
    QList<std::optional<QString>> answers;

    ~Fixture() { desktop.reset(); } // while there is a bus

    void startPortal(FakePortal::Mood mood = FakePortal::Mood::Serving)
    {
        portal.reset(); // one at a time has its name
        portal = std::make_unique<FakePortal>(bus->address(), mood);
    }
    void ask()
    {
        desktop->chooseSaveFile({.title = QStringLiteral("حفظ"), .fileName = QStringLiteral("report.json")},
            asker.get(), [this](const std::optional<QString> &path) { answers.append(path); });
    }
    /// A portal that has been asked; false: it was not.
    [[nodiscard]] bool asksPortal(FakePortal::Mood mood = FakePortal::Mood::Serving)
    {
        startPortal(mood);
        ask();
        return QTest::qWaitFor([this] { return portal->questions().size() == 1; });
    }
    [[nodiscard]] bool answered(const std::optional<QString> &path)
    {
        return QTest::qWaitFor([this] { return !answers.isEmpty(); }) && answers == QList<std::optional<QString>>{path};
    }
    [[nodiscard]] QString path(const QString &fileName) const { return folder.filePath(fileName); }
    [[nodiscard]] static QString uri(const QString &file)
    {
        return QUrl::fromLocalFile(file).toString(QUrl::FullyEncoded);
    }
};

QFileDialog *ownDialog()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (auto *dialog = qobject_cast<QFileDialog *>(window); dialog != nullptr && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

} // namespace

class DesktopTest : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void open(const QUrl &url) { m_opened.append(url); }

private Q_SLOTS:
    void initTestCase()
    {
        QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open");
        QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "open");
    }
    void cleanupTestCase()
    {
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    }
    void init() { m_opened.clear(); }
    void cleanup() { QVERIFY(!ownDialog()); }

    // An old portal names its requests itself.
    void portalAsksThePerson()
    {
        for (const auto mood : {FakePortal::Mood::Serving, FakePortal::Mood::Old}) {
            Fixture f;
            QVERIFY(f.asksPortal(mood));
            const FakePortal::Question question = f.portal->questions().first();
            QCOMPARE(question.title, QStringLiteral("حفظ"));
            QCOMPARE(question.options.value(QStringLiteral("current_name")).toString(), QStringLiteral("report.json"));
            QCOMPARE(question.patterns, QStringList{QStringLiteral("*.json")});
            FakePortal::settle(f.client.bus);
            const QString path = f.path(QStringLiteral("تقرير #1 100%.json"));
            f.portal->respond(0, {Fixture::uri(path)});
            QVERIFY(f.answered(path));
            f.portal->respond(0, {Fixture::uri(f.path(QStringLiteral("again.json")))});
            FakePortal::settle(f.client.bus);
            QVERIFY(f.answered(path) && f.portal->closed().isEmpty());
        }
    }

    void portalsAnswerIsRead()
    {
        Fixture f;
        const QString taken = f.path(QStringLiteral("x"));
        QVERIFY(QFile(taken + QStringLiteral(".json")).open(QIODevice::WriteOnly));
        const auto path = [](const char *text) { return std::optional(QString::fromLatin1(text)); };
        const std::tuple<uint, QString, std::optional<QString>> rows[] = {
            {1, {}, {}}, // cancelled
            {2, {}, {}}, // the window was closed
            {0, {}, {}}, // nothing chosen
            {0, QStringLiteral("smb:/host/x.json"), {}},
            {0, QStringLiteral("file:/nowhere/x"), path("/nowhere/x.json")},
            {0, QStringLiteral("file:/nowhere/x.JSON"), path("/nowhere/x.JSON")},
            {0, QStringLiteral("file:/dev/null"), path("/dev/null")}, // one that is there keeps its name
            {0, Fixture::uri(taken), taken}, // since with the ending it would be another file that is there
        };
        for (const auto &[response, uri, chosen] : rows) {
            const InRow row(uri.toUtf8());
            f.answers.clear();
            QVERIFY(f.asksPortal());
            f.portal->respond(response, uri.isEmpty() ? QStringList() : QStringList{uri});
            QVERIFY(f.answered(chosen));
        }
        // Before the call has returned.
        f.answers.clear();
        QVERIFY(f.asksPortal(FakePortal::Mood::Hasty) && f.answered(std::nullopt));
    }

    void ownDialogWhereThePortalIsNot_data()
    {
        QTest::addColumn<QString>("how");
        for (const char *how : {"no portal", "no file dialogs", "no bus", "portal dies", "bus dies", "portal hangs"})
            QTest::newRow(how) << QString::fromLatin1(how);
    }
    void ownDialogWhereThePortalIsNot()
    {
        QFETCH(const QString, how);
        Fixture f;
        if (how == QLatin1String("no bus"))
            f.desktop = std::make_unique<LinuxDesktop>(QDBusConnection(QStringLiteral("nowhere")));
        else if (how == QLatin1String("no file dialogs"))
            f.startPortal(FakePortal::Mood::Refusing);
        else if (how == QLatin1String("portal hangs"))
            f.startPortal(FakePortal::Mood::Hanging);
        else if (how != QLatin1String("no portal"))
            f.startPortal();
        f.ask();
        if (how.endsWith(QLatin1String("dies"))) {
            QTRY_COMPARE(f.portal->questions().size(), 1);
            FakePortal::settle(f.client.bus);
            QVERIFY(!ownDialog());
            if (how.startsWith(QLatin1String("bus")))
                f.bus.reset();
            else
                f.portal.reset();
        }
        QTRY_VERIFY(ownDialog());
        if (f.portal && how == QLatin1String("portal hangs"))
            QTRY_COMPARE(f.portal->closed(), QStringList{f.portal->questions().first().request});
        QFileDialog *dialog = ownDialog();
        QCOMPARE(dialog->windowTitle(), QStringLiteral("حفظ"));
        QCOMPARE(dialog->layoutDirection(), Qt::RightToLeft);
        QCOMPARE(dialog->nameFilters(), QStringList{QStringLiteral("ملف JSON (*.json)")});
        auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        QCOMPARE(name->text(), QStringLiteral("report.json"));
        dialog->setDirectory(f.folder.path());
        name->setText(QStringLiteral("mine"));
        QMetaObject::invokeMethod(dialog, "accept");
        QVERIFY(f.answered(f.path(QStringLiteral("mine.json"))));
    }

    void dialogIsCancelledOrGoesWithTheAsker()
    {
        Fixture f;
        f.ask();
        QTRY_VERIFY(ownDialog());
        QTest::keyClick(ownDialog(), Qt::Key_Escape);
        QVERIFY(f.answered(std::nullopt));

        f.answers.clear();
        f.ask();
        QTRY_VERIFY(ownDialog());
        f.asker = std::make_unique<QObject>();
        QTRY_VERIFY(!ownDialog());
        QVERIFY(f.asksPortal());
        f.asker.reset();
        QTRY_COMPARE(f.portal->closed(), QStringList{f.portal->questions().first().request});
        QVERIFY(f.answers.isEmpty());
    }

    void revealsInTheFileManagerOrOpensTheFolder()
    {
        Fixture f;
        const QString file = f.path(QStringLiteral("تقرير #1 100%.json"));
        {
            const FakeFileManager manager(f.bus->address());
            f.desktop->reveal(file);
            QTRY_COMPARE(manager.shown, QStringList{Fixture::uri(file)});
            QVERIFY(m_opened.isEmpty());
        }
        for (const bool bus : {true, false}) {
            if (!bus)
                f.bus.reset();
            QTRY_COMPARE(f.client.bus.isConnected(), bus);
            m_opened.clear();
            f.desktop->reveal(f.path(QStringLiteral("a#b/report.json")));
            QTRY_COMPARE(m_opened.size(), 1);
            QCOMPARE(m_opened[0].toLocalFile(), f.path(QStringLiteral("a#b/")));
        }
    }

    void opensAddresses()
    {
        Fixture f;
        const QUrl address(QStringLiteral("https:/docs"));
        QVERIFY(f.desktop->openUrl(address));
        QCOMPARE(m_opened, QList<QUrl>{address});
        QVERIFY(!f.desktop->openUrl(QUrl(QStringLiteral("zemrak-unheard-of:x"))));
    }

    void opensTheSettingsOfTheDesktop()
    {
        using enum Desktop::SettingsPane;
        const std::tuple<const char *, const char *, Desktop::SettingsPane, const char *> rows[] = {
            {"ubuntu:GNOME", "gnome-control-center systemsettings", Notifications,
                "gnome-control-center notifications"},
            {"GNOME", "gnome-control-center gnome-tweaks", LoginItems, "gnome-tweaks "}, // the best program first
            {"GNOME", "gnome-control-center", LoginItems, "gnome-control-center applications"},
            {"KDE", "gnome-control-center systemsettings", LoginItems, "systemsettings kcm_autostart"},
            {"Budgie:GNOME", "gnome-control-center budgie-desktop-settings", LoginItems, "budgie-desktop-settings "},
            {"", "gnome-control-center nm-connection-editor", Network, "nm-connection-editor "},
            {"openbox", "gnome-control-center systemsettings", Notifications, ""}, // nothing for this desktop
            {"KDE", "gnome-control-center", Network, ""}, // nothing installed
        };
        for (const auto &[current, installed, pane, started] : rows) {
            const InRow row(QByteArray(current) + ": " + installed);
            Fixture f;
            for (const QByteArray &program : QByteArray(installed).split(' ')) {
                QFile script(f.path(QString::fromLatin1(program)));
                QVERIFY(script.open(QIODevice::WriteOnly));
                script.write("#!/bin/sh\nprintf '%s' \"${0##*/} $*\" > \"${0%/*}/new\"; "
                             "/bin/mv \"${0%/*}/new\" \"${0%/*}/started\"\n");
                QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
            }
            const QByteArray path = qgetenv("PATH");
            qputenv("PATH", QFile::encodeName(f.folder.path()));
            qputenv("XDG_CURRENT_DESKTOP", current);
            const bool opened = f.desktop->openSettings(pane);
            qputenv("PATH", path);
            QCOMPARE(opened, *started != 0);
            QFile said(f.path(QStringLiteral("started")));
            QTRY_COMPARE(said.exists(), opened);
            if (opened) {
                QVERIFY(said.open(QIODevice::ReadOnly));
                QCOMPARE(said.readAll(), QByteArray(started));
            }
        }
    }

private:
    QList<QUrl> m_opened;
};

ZEMRAK_TEST(desktop, DesktopTest, QApplication)
#include "tst_desktop.moc"
