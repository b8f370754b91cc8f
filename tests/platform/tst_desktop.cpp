#include "platform/linux/linuxdesktop.h"
#include "platform/linux/settingsprograms.h"
#include "support/fakefilemanager.h"
#include "support/fakeportal.h"
#include "support/privatebus.h"
#include "support/testmain.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QElapsedTimer>
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
    QDBusConnection connection = QDBusConnection::connectToBus(bus->address(), name());
    QTemporaryDir folder;
    std::unique_ptr<LinuxDesktop> desktop = std::make_unique<LinuxDesktop>(connection, patience);
    std::unique_ptr<FakePortal> portal;
    std::unique_ptr<QObject> asker = std::make_unique<QObject>();
    QList<std::optional<QString>> answers;

    ~Fixture()
    {
        desktop.reset();
        QDBusConnection::disconnectFromBus(connection.name());
    }

    static QString name()
    {
        static int count = 0;
        return QStringLiteral("desktop-%1").arg(++count);
    }
    void startPortal(FakePortal::Mood mood = FakePortal::Mood::Serving)
    {
        portal = std::make_unique<FakePortal>(bus->address(), mood);
    }
    void ask()
    {
        desktop->chooseSaveFile({.title = QStringLiteral("حفظ"), .fileName = QStringLiteral("report.json")},
            asker.get(), [this](const std::optional<QString> &path) { answers.append(path); });
    }
    [[nodiscard]] bool asked() const { return portal->questions().size() == 1; }
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

    void portalAsksThePerson_data()
    {
        QTest::addColumn<bool>("old");
        QTest::newRow("names requests as told") << false;
        QTest::newRow("names requests itself") << true;
    }
    void portalAsksThePerson()
    {
        QFETCH(const bool, old);
        Fixture f;
        f.startPortal(old ? FakePortal::Mood::Old : FakePortal::Mood::Serving);
        f.ask();
        QTRY_VERIFY(f.asked());
        const FakePortal::Question question = f.portal->questions().first();
        QCOMPARE(question.title, QStringLiteral("حفظ"));
        QCOMPARE(question.options.value(QStringLiteral("current_name")).toString(), QStringLiteral("report.json"));
        QCOMPARE(question.patterns, QStringList{QStringLiteral("*.json")});
        FakePortal::settle(f.connection);
        f.portal->respond(0, {Fixture::uri(f.path(QStringLiteral("تقرير #1 100%.json")))});
        QTRY_COMPARE(f.answers.size(), 1);
        QCOMPARE(f.answers[0], f.path(QStringLiteral("تقرير #1 100%.json")));
        f.portal->respond(0, {Fixture::uri(f.path(QStringLiteral("again.json")))});
        FakePortal::settle(f.connection);
        QCOMPARE(f.answers.size(), 1);
        QVERIFY(f.portal->closed().isEmpty());
    }

    void portalsAnswerIsRead_data()
    {
        QTest::addColumn<uint>("response");
        QTest::addColumn<QString>("uri");
        QTest::addColumn<QString>("path");
        QTest::newRow("cancelled") << 1U << QString() << QString();
        QTest::newRow("window closed") << 2U << QString() << QString();
        QTest::newRow("nothing chosen") << 0U << QString() << QString();
        QTest::newRow("not a local file") << 0U << QStringLiteral("smb:/host/x.json") << QString();
        QTest::newRow("without ending") << 0U << QStringLiteral("file:/nowhere/x") << QStringLiteral("/nowhere/x.json");
        QTest::newRow("other case") << 0U << QStringLiteral("file:/nowhere/x.JSON")
                                    << QStringLiteral("/nowhere/x.JSON");
        QTest::newRow("existing without ending")
            << 0U << QStringLiteral("file:/dev/null") << QStringLiteral("/dev/null");
    }
    void portalsAnswerIsRead()
    {
        QFETCH(const uint, response);
        QFETCH(const QString, uri);
        QFETCH(const QString, path);
        Fixture f;
        f.startPortal();
        f.ask();
        QTRY_VERIFY(f.asked());
        f.portal->respond(response, uri.isEmpty() ? QStringList() : QStringList{uri});
        QTRY_COMPARE(f.answers.size(), 1);
        QCOMPARE(f.answers[0], path.isEmpty() ? std::nullopt : std::optional(path));
    }

    void endingIsNotAddedOntoAnotherFile()
    {
        Fixture f;
        f.startPortal();
        QFile other(f.path(QStringLiteral("x.json")));
        QVERIFY(other.open(QIODevice::WriteOnly));
        f.ask();
        QTRY_VERIFY(f.asked());
        f.portal->respond(0, {Fixture::uri(f.path(QStringLiteral("x")))});
        QTRY_COMPARE(f.answers.size(), 1);
        QCOMPARE(f.answers[0], f.path(QStringLiteral("x")));
    }

    void answerBeforeTheCallReturnsIsNotMissed()
    {
        Fixture f;
        f.startPortal(FakePortal::Mood::Hasty);
        f.ask();
        QTRY_COMPARE(f.answers.size(), 1);
        QCOMPARE(f.answers[0], std::nullopt);
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
        if (how == QLatin1String("no bus")) {
            f.desktop = std::make_unique<LinuxDesktop>(QDBusConnection(QStringLiteral("nowhere")));
        } else if (how == QLatin1String("no file dialogs")) {
            f.startPortal(FakePortal::Mood::Refusing);
        } else if (how == QLatin1String("portal hangs")) {
            f.startPortal(FakePortal::Mood::Hanging);
        } else if (how != QLatin1String("no portal")) {
            f.startPortal();
        }
        f.ask();
        if (how.endsWith(QLatin1String("dies"))) {
            QTRY_VERIFY(f.asked());
            FakePortal::settle(f.connection);
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
        QTRY_COMPARE(f.answers.size(), 1);
        QCOMPARE(f.answers[0], f.path(QStringLiteral("mine.json")));
    }

    void ownDialogCancelled()
    {
        Fixture f;
        f.ask();
        QTRY_VERIFY(ownDialog());
        QTest::keyClick(ownDialog(), Qt::Key_Escape);
        QTRY_COMPARE(f.answers.size(), 1);
        QCOMPARE(f.answers[0], std::nullopt);
    }

    void dialogGoesWithTheAsker()
    {
        Fixture f;
        f.ask();
        QTRY_VERIFY(ownDialog());
        f.asker = std::make_unique<QObject>();
        QTRY_VERIFY(!ownDialog());
        f.startPortal();
        f.ask();
        QTRY_VERIFY(f.asked());
        f.asker.reset();
        QTRY_COMPARE(f.portal->closed(), QStringList{f.portal->questions().first().request});
        QVERIFY(f.answers.isEmpty());
    }

    void revealsInTheFileManager()
    {
        Fixture f;
        const FakeFileManager manager(f.bus->address());
        const QString file = f.path(QStringLiteral("تقرير #1 100%.json"));
        f.desktop->reveal(file);
        QTRY_COMPARE(manager.shown(), QStringList{Fixture::uri(file)});
        QVERIFY(m_opened.isEmpty());
    }

    void opensTheFolderWhereThereIsNoFileManager_data()
    {
        QTest::addColumn<bool>("bus");
        QTest::newRow("nobody answers") << true;
        QTest::newRow("no bus") << false;
    }
    void opensTheFolderWhereThereIsNoFileManager()
    {
        QFETCH(const bool, bus);
        Fixture f;
        if (!bus)
            f.bus.reset();
        QTRY_COMPARE(f.connection.isConnected(), bus);
        f.desktop->reveal(f.path(QStringLiteral("a#b/report.json")));
        QTRY_COMPARE(m_opened.size(), 1);
        QCOMPARE(m_opened[0].toLocalFile(), f.path(QStringLiteral("a#b/")));
    }

    void opensAddresses()
    {
        Fixture f;
        const QUrl address(QStringLiteral("https:/docs"));
        QVERIFY(f.desktop->openUrl(address));
        QCOMPARE(m_opened, QList<QUrl>{address});
        QVERIFY(!f.desktop->openUrl(QUrl(QStringLiteral("zemrak-unheard-of:x"))));
    }

    void opensTheSettingsOfTheDesktop_data()
    {
        QTest::addColumn<QString>("current");
        QTest::addColumn<QStringList>("installed");
        QTest::addColumn<int>("pane");
        QTest::addColumn<QString>("started");
        const auto row = [](const char *name, const char *current, const QStringList &installed,
                             Desktop::SettingsPane pane, const char *started) {
            QTest::newRow(name) << QString::fromLatin1(current) << installed << static_cast<int>(pane)
                                << QString::fromLatin1(started);
        };
        const auto gnome = QStringLiteral("gnome-control-center");
        const auto kde = QStringLiteral("systemsettings");
        using enum Desktop::SettingsPane;
        row("gnome's page", "ubuntu:GNOME", {gnome, kde}, Notifications, "gnome-control-center notifications");
        row("best program first", "GNOME", {gnome, QStringLiteral("gnome-tweaks")}, LoginItems, "gnome-tweaks ");
        row("second best", "GNOME", {gnome}, LoginItems, "gnome-control-center applications");
        row("kde", "KDE", {gnome, kde}, LoginItems, "systemsettings kcm_autostart");
        row("first named wins", "Budgie:GNOME", {gnome, QStringLiteral("budgie-desktop-settings")}, LoginItems,
            "budgie-desktop-settings ");
        row("program of no desktop", "", {gnome, QStringLiteral("nm-connection-editor")}, Network,
            "nm-connection-editor ");
        row("nothing there", "openbox", {gnome, kde}, Notifications, "");
        row("nothing installed", "KDE", {gnome}, Network, "");
    }
    void opensTheSettingsOfTheDesktop()
    {
        QFETCH(const QString, current);
        QFETCH(const QStringList, installed);
        QFETCH(const int, pane);
        QFETCH(const QString, started);
        Fixture f;
        const QString journal = f.path(QStringLiteral("started"));
        for (const QString &program : installed) {
            QFile script(f.path(program));
            QVERIFY(script.open(QIODevice::WriteOnly));
            script.write("#!/bin/sh\nprintf '%s' \"${0##*/} $*\" > \"${0%/*}/new\"; /bin/mv \"${0%/*}/new\" "
                         "\"${0%/*}/started\"\n");
            QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        }
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(f.folder.path()));
        qputenv("XDG_CURRENT_DESKTOP", current.toLatin1());
        const bool opened = f.desktop->openSettings(static_cast<Desktop::SettingsPane>(pane));
        qputenv("PATH", path);
        QCOMPARE(opened, !started.isEmpty());
        if (opened) {
            QTRY_VERIFY(QFile::exists(journal));
            QFile said(journal);
            QVERIFY(said.open(QIODevice::ReadOnly));
            QCOMPARE(QString::fromUtf8(said.readAll()), started);
        }
    }

private:
    QList<QUrl> m_opened;
};

ZEMRAK_TEST(desktop, DesktopTest, QApplication)
#include "tst_desktop.moc"
