#include "support/displaywindow.h"
#include "support/notificationserver.h"
#include "support/privatedisplay.h"
#include "support/program.h"
#include "support/receiptprinter.h"
#include "support/screenreader.h"
#include "support/testmain.h"
#include "support/traypanel.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QSettings>
#include <QTcpServer>
#include <QTest>

#include <csignal>
#include <optional>

using namespace zemrak::test;

namespace {

const QString healthy = QStringLiteral("✓ كل شيء يعمل");
const QString showWindow = QStringLiteral("فتح النافذة");
const QString startAtLogin = QStringLiteral("التشغيل عند بدء تشغيل الجهاز");
const QString quit = QStringLiteral("خروج");
const QString automatic = QStringLiteral("--automatic-start");

void write(const QString &fileName, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(fileName).path());
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("Cannot write %s", qUtf8Printable(fileName));
}

QByteArray contentOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A desktop that somebody works at, and the program on it, set up already, with a printer on the network.
class Session
{
public:
    Session()
    {
        panel.appear();
        writeSettings(home);
        if (!printer.switchOn())
            qFatal("There is no port for a printer");
        printer.plant(home, "Kitchen");
    }

    void start(const QStringList &arguments = {})
    {
        program.emplace(home, bus, arguments, builtBundle(),
            QHash<QString, QString>{{QStringLiteral("DISPLAY"), display.name()},
                {QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb")},
                {QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("XFCE")},
                {QStringLiteral("PATH"), home.filePath(QStringLiteral("bin:")) + qEnvironmentVariable("PATH")}});
    }
    /// As soon as it is there.
    [[nodiscard]] bool press(const QString &name) const
    {
        return QTest::qWaitFor([&] { return reader.press(name); });
    }
    [[nodiscard]] bool focus(const QString &name) const
    {
        return QTest::qWaitFor([&] { return reader.focus(name); });
    }
    [[nodiscard]] bool says(const QString &label) const
    {
        return reader.knowsProgram() && panel.items().size() == 1 && panel.labels().contains(label);
    }
    [[nodiscard]] bool isTicked() const
    {
        const QList<TrayPanel::Entry> menu = panel.menu();
        return std::any_of(
            menu.cbegin(), menu.cend(), [](const auto &each) { return each.label == startAtLogin && each.checked; });
    }
    [[nodiscard]] QList<qint64> services() const
    {
        QList<qint64> found;
        for (const qint64 child : childrenOf(program->processId())) {
            if (contentOf(QStringLiteral("/proc/%1/cmdline").arg(child)).contains("zemrak-local-print.mjs"))
                found.append(child);
        }
        return found;
    }
    /// Of the desktop's settings: keeps its environment for a look.
    void installSettingsProgram(const QString &name) const
    {
        const QString fileName = home.filePath(QStringLiteral("bin/") + name);
        write(fileName, "#!/bin/sh\nenv > \"$HOME/part\" && mv \"$HOME/part\" \"$HOME/" + name.toUtf8() + "\"\n");
        QFile::setPermissions(fileName, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    [[nodiscard]] QByteArray environmentOf(const QString &name) const { return contentOf(home.filePath(name)); }
    [[nodiscard]] QString autostartFile() const
    {
        return home.filePath(QStringLiteral(".config/autostart/com.zemrak.Printer.desktop"));
    }
    [[nodiscard]] QString serviceFile(const QString &name) const
    {
        return home.filePath(QStringLiteral("Library/Application Support/Zemrak Local Print/")) + name;
    }

    const QTemporaryDir home;
    ReceiptPrinter printer;
    const PrivateBus bus;
    const PrivateDisplay display{QStringLiteral("1280x900")};
    const DisplayWindow window{display.name()};
    TrayPanel panel{bus.address()};
    NotificationServer notifications{bus.address()};
    const ScreenReader reader{bus.address()};
    std::optional<Program> program;
};

} // namespace

// The whole program, and a person who chooses from its tray, its window and its notifications.
class ChoicesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY2(!servicePortTaken(), "Port 17731 is in use on this machine"); }

    // Where nothing else would tell that it runs.
    void showsItselfWithoutATray()
    {
        Session session;
        session.panel.goAway();
        session.start({automatic});
        QTRY_VERIFY_WITH_TIMEOUT(servicePortTaken(), 15'000);
        QVERIFY(!session.window.isOpen());
        QTRY_VERIFY_WITH_TIMEOUT(session.window.isOpen(), 20'000);
        QVERIFY(session.program->output().contains("Asked to show the main window"));
    }

    void trayShowsTheWindow()
    {
        Session session;
        session.start({automatic});
        QTRY_VERIFY_WITH_TIMEOUT(session.says(healthy), 15'000);
        QVERIFY(!session.window.isOpen());

        session.panel.choose(showWindow);
        QTRY_VERIFY(session.window.isOpen());
        QTRY_VERIFY(session.reader.findsHeading(QStringLiteral("كل شيء جاهز للطباعة")));
        QVERIFY(!session.reader.finds(QStringLiteral("نتيجة فحص الاتصال")));
        session.window.close();
        QTRY_VERIFY(!session.window.isOpen());

        session.panel.clickIcon();
        QTRY_VERIFY(session.window.isOpen());
        session.window.close();
        QTRY_VERIFY(!session.window.isOpen());

        session.panel.choose(QStringLiteral("فحص الاتصال"));
        QTRY_VERIFY(session.window.isOpen());
        QTRY_VERIFY(session.reader.finds(QStringLiteral("نتيجة فحص الاتصال")));
        QVERIFY(session.program->isAlive());
    }

    void trayWorksWithoutTheWindow()
    {
        Session session;
        const QString settings = QStringLiteral("xfce4-session-settings");
        session.installSettingsProgram(settings);
        session.start({automatic});
        QTRY_VERIFY_WITH_TIMEOUT(session.says(healthy), 15'000);

        QVERIFY(!session.isTicked());
        session.panel.choose(startAtLogin);
        QTRY_VERIFY(session.isTicked());
        QByteArray entry = contentOf(session.autostartFile());
        QVERIFY2(entry.contains(builtBundle().toUtf8() + "/bin/zemrak-printer"), entry.constData());
        write(session.autostartFile(), entry + "Hidden=true\n"); // as the desktop's settings do
        const QString allow = QStringLiteral("السماح من إعدادات النظام…");
        QTRY_VERIFY(session.says(allow));
        QVERIFY(!session.isTicked() && session.environmentOf(settings).isEmpty());
        session.panel.choose(allow);
        QTRY_VERIFY(!session.environmentOf(settings).isEmpty());
        write(session.autostartFile(), entry);
        QTRY_VERIFY(session.isTicked());
        QVERIFY(!session.says(allow));
        session.panel.choose(startAtLogin);
        QTRY_VERIFY(!session.isTicked());
        QVERIFY(!QFile::exists(session.autostartFile()));

        const QList<qint64> services = session.services();
        QCOMPARE(services.size(), 1);
        session.panel.choose(QStringLiteral("إعادة تشغيل الخدمة"));
        QTRY_VERIFY(!exists(services.first()));
        QTRY_VERIFY(session.services().size() == 1 && servicePortTaken());
        const qint64 next = session.services().first();
        QVERIFY(!session.window.isOpen());

        session.panel.choose(quit);
        QTRY_VERIFY(session.program->endedWith(0));
        QVERIFY(!exists(next) && session.panel.items().isEmpty());
        const QByteArray output = session.program->output();
        QVERIFY2(output.count("The print service ended") == 2 && !output.contains("signal 9"), output.constData());
    }

    // The token by which the desktop lets a window come to the front is where Qt takes it from: in the environment,
    // which here, where Qt has no use for it, a program started next inherits.
    void notificationLeadsToTheAlerts()
    {
        Session session;
        const QString settings = QStringLiteral("nm-connection-editor");
        session.installSettingsProgram(settings);
        session.start(); // by hand, so with its window
        QTRY_VERIFY_WITH_TIMEOUT(session.says(healthy), 15'000);
        QVERIFY(session.press(QStringLiteral("الإعدادات")));
        QTRY_VERIFY(session.reader.findsHeading(QStringLiteral("الإعدادات")));
        const QString keepAwake = QStringLiteral("إبقاء الجهاز مستيقظًا");
        QTRY_VERIFY(session.reader.findsBox(keepAwake, false));
        QVERIFY(session.press(keepAwake));
        QTRY_VERIFY(session.reader.findsBox(keepAwake, true));
        QVERIFY(session.press(QStringLiteral("التحقق من التحديثات")));
        QTRY_VERIFY(session.reader.finds(QStringLiteral("التحديث التلقائي غير مفعّل بعد")));
        QVERIFY(session.press(QStringLiteral("إرسال إشعار تجريبي")));
        QTRY_COMPARE(session.notifications.notes().size(), 1);
        const NotificationServer::Note note = session.notifications.notes().first();
        QVERIFY(
            note.title == QLatin1String("Zemrak Printer") && note.body.startsWith(QStringLiteral("الإشعارات تعمل ✓")));

        const QString alerts = QStringLiteral("الإشعارات");
        QVERIFY(!session.reader.findsHeading(alerts));
        session.notifications.click(note.number);
        QTRY_VERIFY(session.reader.findsHeading(alerts));

        session.window.close();
        QTRY_VERIFY(!session.window.isOpen());
        session.notifications.click(note.number, QStringLiteral("token-17"));
        QTRY_VERIFY(session.window.isOpen());
        QTRY_VERIFY(session.reader.findsHeading(alerts));
        QVERIFY(session.press(QStringLiteral("الإعدادات")));
        QTRY_VERIFY(session.reader.findsHeading(QStringLiteral("الإعدادات")));
        QVERIFY(session.press(QStringLiteral("فتح إعدادات النظام")));
        QTRY_VERIFY(session.environmentOf(settings).contains("XDG_ACTIVATION_TOKEN=token-17\n"));
    }

    void quittingSavesWhatWasJustTyped()
    {
        Session session;
        session.start();
        QTRY_VERIFY_WITH_TIMEOUT(session.says(healthy), 15'000);
        QVERIFY(session.press(QStringLiteral("الطابعات")));
        QVERIFY(session.press(QStringLiteral("Kitchen")));
        QTRY_VERIFY(session.reader.isFocused(QStringLiteral("لغة الطابعة"))); // the sheet is open
        const QString alias = QStringLiteral("اسم مستعار");
        QVERIFY(session.focus(alias));
        QTRY_VERIFY(session.reader.isFocused(alias));
        session.window.type("till");
        QTRY_COMPARE(session.reader.textOf(alias), QStringLiteral("till"));
        session.panel.choose(quit);
        QTRY_VERIFY(session.program->endedWith(0));
        const QByteArray kept = contentOf(session.serviceFile(QStringLiteral("settings.json")));
        QVERIFY2(kept.contains("\"till\""), kept.constData());
    }

    void quitsDuringAPortConflict()
    {
        QTcpServer squatter;
        QVERIFY(squatter.listen(QHostAddress::LocalHost, 17731));
        Session session;
        session.start({automatic});
        QTRY_VERIFY_WITH_TIMEOUT(session.says(QStringLiteral("\u26A0\uFE0E المنفذ مشغول")), 15'000);
        session.panel.choose(quit);
        QTRY_VERIFY_WITH_TIMEOUT(session.program->endedWith(0), 3000);
        QVERIFY(session.panel.items().isEmpty());
    }

    void loginItemIsSwitchedBesideARunningCopy()
    {
        Session session;
        session.start({automatic});
        QTRY_VERIFY_WITH_TIMEOUT(session.says(healthy), 15'000);
        const QList<qint64> services = session.services();
        const auto lineAfter = [&session](const char *value) {
            Program mode(session.home, session.bus, {QStringLiteral("--login-item=") + QLatin1String(value)});
            return QTest::qWaitFor([&mode] { return mode.endedWith(0); }) ? mode.output() : QByteArray("no end");
        };
        const auto line = [](int status) {
            return "login-item-status: " + QByteArray::number(status)
                + " (0 notRegistered, 1 enabled, 2 requiresApproval, 3 notFound)\n";
        };
        QCOMPARE(lineAfter("maybe"), line(0));
        QVERIFY(!QFile::exists(session.autostartFile()));
        QCOMPARE(lineAfter("on"), line(1));
        QTRY_VERIFY(session.isTicked()); // the running copy sees it
        const QByteArray entry = contentOf(session.autostartFile());
        QCOMPARE(lineAfter("OFF"), line(1));
        QCOMPARE(contentOf(session.autostartFile()), entry);
        write(session.autostartFile(), entry + "Hidden=true\n");
        QCOMPARE(lineAfter(""), line(2));
        write(session.autostartFile(), "[Desktop Entry]\nType=Application\nExec=/nowhere/program\n");
        QCOMPARE(lineAfter("neither"), line(3));
        QCOMPARE(lineAfter("off"), line(0));
        QVERIFY(!QFile::exists(session.autostartFile()));
        // Refused by the system: told on the other stream, and wished for all the same.
        QVERIFY(QDir().rmdir(QFileInfo(session.autostartFile()).path()));
        write(QFileInfo(session.autostartFile()).path(), "in the way");
        const QByteArray refused = lineAfter("on");
        QVERIFY2(refused.endsWith(line(0)) && refused.startsWith("Login item: "), refused.constData());
        const QSettings settings(
            session.home.filePath(QStringLiteral(".config/zemrak-printer/settings.ini")), QSettings::IniFormat);
        QCOMPARE(settings.value(QStringLiteral("loginWanted")).toString(), QStringLiteral("true"));
        QCOMPARE(settings.value(QStringLiteral("loginRegisteredPath")).toString(), builtBundle());

        QCOMPARE(session.services(), services);
        QVERIFY(!session.window.isOpen() && !session.program->output().contains("Asked to show"));
    }

    // Of an entry that was made for another folder; the rest is LaunchAtLogin's.
    void startMendsTheLoginItem()
    {
        Session session;
        write(session.autostartFile(), "[Desktop Entry]\nType=Application\nExec=/bin/true\n");
        writeSettings(session.home, "onboardingDone=true\nloginWanted=true\nloginRegisteredPath=/opt/earlier\n");
        const QDateTime began = QDateTime::currentDateTime();
        session.start({automatic});
        QTRY_VERIFY_WITH_TIMEOUT(session.panel.items().size() == 1, 15'000);
        session.program->signal(SIGTERM);
        QTRY_VERIFY(session.program->endedWith(0));

        const QByteArray after = contentOf(session.autostartFile());
        QVERIFY2(after.contains(builtBundle().toUtf8() + "/bin/zemrak-printer") && after.contains(automatic.toUtf8()),
            after.constData());
        const QSettings settings(
            session.home.filePath(QStringLiteral(".config/zemrak-printer/settings.ini")), QSettings::IniFormat);
        QCOMPARE(settings.value(QStringLiteral("loginRegisteredPath")).toString(), builtBundle());
        const QDateTime seen
            = QDateTime::fromString(settings.value(QStringLiteral("lastSystemStart")).toString(), Qt::ISODateWithMs);
        QVERIFY(seen >= began && seen <= QDateTime::currentDateTime());
    }
};

ZEMRAK_TEST(choices, ChoicesTest, QCoreApplication)
#include "tst_choices.moc"
