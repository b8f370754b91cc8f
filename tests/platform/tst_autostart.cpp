#include "platform/linux/autostartentry.h"
#include "platform/linux/desktopentry.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace zemrak;
using namespace zemrak::linux_;
using zemrak::test::InRow;

namespace {

struct Fixture
{
    QTemporaryDir folder;

    explicit Fixture(const QString &bundle = QStringLiteral("bundle"))
        : program(folder.filePath(bundle) + QStringLiteral("/zemrak-printer"))
    {
        qputenv("XDG_CONFIG_HOME", path(QStringLiteral("config home")).toUtf8());
        qputenv("XDG_CONFIG_DIRS", path(QStringLiteral("system")).toUtf8());
        qputenv("XDG_CURRENT_DESKTOP", "GNOME:Debian");
        write(program,
            "#!/bin/sh\nprintf '%s\\n' \"$0\" \"$@\" > \"$STARTED.part\"; mv \"$STARTED.part\" \"$STARTED\"\n");
        QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    [[nodiscard]] QString path(const QString &name) const { return folder.filePath(name); }
    [[nodiscard]] QString file() const
    {
        return path(QStringLiteral("config home/autostart/com.zemrak.Printer.desktop"));
    }
    [[nodiscard]] AutostartEntry entry() const { return {program, path(QStringLiteral("ico n.png"))}; }
    [[nodiscard]] QByteArray text() const
    {
        QFile in(file());
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }
    static void write(const QString &name, const QByteArray &content)
    {
        QDir().mkpath(QFileInfo(name).path());
        QFile out(name);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(content);
    }

    QString program;
};

} // namespace

class AutostartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// A desktop's own reader starts what the entry says, wherever the bundle lies.
    void startsTheProgramFromAnyFolder_data()
    {
        QTest::addColumn<QString>("bundle");
        for (const char *name : {"plain", "with blanks  in it", "it's \"quoted\"", "100% %u %%f", "مجلد الطابعة",
                 "$HOME `id` \\n \\\\", "a=b;c&d|e#f*?(g)~<h>", " leading", "tab\there\nand line"})
            QTest::newRow(name) << QString::fromUtf8(name);
    }
    void startsTheProgramFromAnyFolder()
    {
        QFETCH(QString, bundle);
        Fixture f(bundle);
        AutostartEntry entry = f.entry();
        QCOMPARE(entry.status(), LoginItemStatus::NotRegistered);
        QCOMPARE(entry.registerItem(), std::nullopt);
        QCOMPARE(entry.status(), LoginItemStatus::Enabled);

        QProcess validator;
        validator.start(QStringLiteral("desktop-file-validate"), {f.file()});
        QVERIFY(validator.waitForFinished() && validator.exitStatus() == QProcess::NormalExit);
        QCOMPARE(validator.readAll(), QByteArray());
        QCOMPARE(validator.exitCode(), 0);

        const QString started = f.path(QStringLiteral("started"));
        QProcess desktop;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("STARTED"), started);
        desktop.setProcessEnvironment(environment);
        desktop.start(QStringLiteral("gio"), {QStringLiteral("launch"), f.file()});
        QVERIFY(desktop.waitForFinished());
        QTRY_VERIFY2(QFile::exists(started), (desktop.readAllStandardError() + f.text()).constData());
        QFile out(started);
        QVERIFY(out.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(out.readAll()), f.program + QStringLiteral("\n--automatic-start\n"));

        QCOMPARE(entry.unregisterItem(), std::nullopt);
        QCOMPARE(entry.unregisterItem(), std::nullopt);
        QCOMPARE(entry.status(), LoginItemStatus::NotRegistered);
    }

    void readsWhatTheDesktopWouldDo()
    {
        using enum LoginItemStatus;
        const std::pair<const char *, LoginItemStatus> rows[] = {{"", Enabled}, {"Hidden=true\n", RequiresApproval},
            {"X-GNOME-Autostart-enabled=false\n", RequiresApproval}, {"OnlyShowIn=KDE;XFCE;\n", RequiresApproval},
            {"OnlyShowIn=KDE;GNOME;\nNotShowIn=XFCE;\n", Enabled}, {"NotShowIn=GNOME;\n", RequiresApproval},
            {"Exec=/nowhere/zemrak-printer\n", NotFound},
            {"Exec=sh -c \"exit %%d\" %U\n", Enabled}, // found on the path
            {"TryExec=/nowhere\n", NotFound}, {"Exec=\"/bin/sh\n", NotFound}, {"Exec=/bin/sh %z\n", NotFound},
            {"Exec=\n", NotFound}, {"Type=Link\n", NotFound}, {"\xff\xfe garbage\n", NotFound},
            {"[Desktop Action x]\nHidden=true\nExec=/nowhere\n", Enabled}}; // of another group
        for (const auto &[added, status] : rows) {
            const InRow row(added);
            Fixture f;
            AutostartEntry entry = f.entry();
            QCOMPARE(entry.registerItem(), std::nullopt);
            Fixture::write(f.file(), f.text() + added);
            QCOMPARE(entry.status(), status);
            QCOMPARE(entry.registerItem(), std::nullopt); // a new registration mends it
            QCOMPARE(entry.status(), Enabled);
        }
    }

    void filesThatAreNone()
    {
        Fixture f;
        AutostartEntry entry = f.entry();
        Fixture::write(f.file(), {});
        QCOMPARE(entry.status(), LoginItemStatus::NotFound);
        QFile::remove(f.file());
        QVERIFY(QFile::link(f.path(QStringLiteral("nowhere")), f.file()));
        QCOMPARE(entry.status(), LoginItemStatus::NotFound);
        QFile::remove(f.file());
        QVERIFY(QDir().mkpath(f.file() + QStringLiteral("/inside")));
        QCOMPARE(entry.status(), LoginItemStatus::NotFound);
        QVERIFY(entry.registerItem()->startsWith(f.file()));
        QVERIFY(entry.unregisterItem()->startsWith(f.file()));

        QFile::setPermissions(f.program, QFile::ReadOwner);
        QVERIFY(QDir(f.file()).removeRecursively());
        QCOMPARE(entry.registerItem(), std::nullopt);
        QCOMPARE(entry.status(), LoginItemStatus::NotFound);
    }

    void saysWhyItCannotRegister()
    {
        // The folder cannot be made: a file stands in its place. It binds the administrator too.
        Fixture blocked;
        Fixture::write(blocked.path(QStringLiteral("config home")), "in the way");
        QVERIFY(!blocked.entry().registerItem()->isEmpty());
        QCOMPARE(blocked.entry().status(), LoginItemStatus::NotRegistered);
    }

    void anAdministratorsEntryCounts()
    {
        Fixture f;
        AutostartEntry entry = f.entry();
        const QString systemFile = f.path(QStringLiteral("system/autostart/com.zemrak.Printer.desktop"));
        QCOMPARE(entry.registerItem(), std::nullopt);
        Fixture::write(systemFile, f.text());
        Fixture::write(f.file(), f.text() + "Hidden=true\n");
        QCOMPARE(entry.status(), LoginItemStatus::RequiresApproval); // the person's own comes first
        QVERIFY(entry.unregisterItem()->startsWith(systemFile));
        QCOMPARE(entry.status(), LoginItemStatus::Enabled);
    }
};

ZEMRAK_TEST(autostart, AutostartTest, QCoreApplication)
#include "tst_autostart.moc"
