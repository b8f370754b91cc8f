#include "health/statusbarcontroller.h"
#include "platform/linux/systemtray.h"
#include "support/privatebus.h"
#include "support/privatedisplay.h"
#include "support/testmain.h"
#include "support/traypanel.h"

#include <QApplication>
#include <QProcess>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTest>

#include <iostream>
#include <string>

using namespace zemrak;
using namespace zemrak::linux_;
using namespace zemrak::test;

// This program is also the application with the icon: with the argument "application" it shows what it is told on its
// standard input and tells what was chosen. It ends with its input.
namespace {

int runApplication(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    SystemTray tray(std::chrono::milliseconds(QByteArray(argv[1]).toInt()));
    StatusBarController controller(tray, QImage());
    const auto say = [](const QByteArray &line) { std::cout << line.constData() << std::endl; };
    QObject::connect(&controller, &StatusBarController::commandChosen, &controller,
        [&say](StatusCommand command) { say("command " + QByteArray::number(static_cast<int>(command))); });

    // "ok" or problems, then perhaps what is to be said of the login item: "a|b +login" or "ok +approval".
    const auto obey = [&](const QString &order) {
        if (order == QLatin1String("available?")) {
            say(tray.isAvailable() ? "yes" : "no");
            return;
        }
        const QStringList problems = order.section(QLatin1String(" +"), 0, 0).split(u'|');
        HealthSummary health{.headline = QStringLiteral("broken"), .problems = problems};
        if (problems.first() == QLatin1String("ok"))
            health = {.ok = true, .headline = QString(), .problems = {}, .connected = 3};
        controller.update(health, order.endsWith(QLatin1String("+login")), order.endsWith(QLatin1String("+approval")));
        say("shown");
    };
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &input, [&obey] {
        if (std::string line; std::getline(std::cin, line))
            obey(QString::fromStdString(line));
        else
            QCoreApplication::quit();
    });
    return QApplication::exec();
}

struct Desktop
{
    bool x11 = true;
    bool bus = true;
    std::chrono::milliseconds patience{50}; ///< with a tray of the older kind
};

/// The application on a bus and a display of its own, with the panels that a test has appear there.
class Fixture
{
public:
    explicit Fixture(const Desktop &desktop = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QLatin1String(desktop.x11 ? "xcb" : "offscreen"));
        environment.insert(QStringLiteral("DISPLAY"), display.name());
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
            desktop.bus ? m_bus.address() : QStringLiteral("unix:path=/nonexistent"));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtime.path());
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_arguments = {QStringLiteral("application"), QString::number(desktop.patience.count())};
    }
    ~Fixture()
    {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(5000))
            m_process.kill();
        m_process.waitForFinished();
        if (m_process.exitStatus() != QProcess::NormalExit || m_process.exitCode() != 0)
            QTest::qFail("The application did not end well", __FILE__, __LINE__);
    }

    void start(const QString &order = QStringLiteral("ok"))
    {
        m_process.start(QCoreApplication::applicationFilePath(), m_arguments);
        QCOMPARE(tell(order), QByteArray("shown"));
    }
    /// One order at a time: each is answered by a line.
    [[nodiscard]] QByteArray tell(const QString &order)
    {
        m_process.write(order.toUtf8() + '\n');
        return heard();
    }
    [[nodiscard]] bool isAvailable() { return tell(QStringLiteral("available?")) == "yes"; }
    /// The next line it says; empty if none comes.
    [[nodiscard]] QByteArray heard()
    {
        if (!QTest::qWaitFor([this] { return m_process.canReadLine(); }, 10'000))
            return {};
        return m_process.readLine().trimmed();
    }

    const PrivateDisplay display;

private:
    const PrivateBus m_bus;
    const QTemporaryDir m_runtime;
    QStringList m_arguments;
    QProcess m_process;

public:
    TrayPanel panel{m_bus.address()};
};

QByteArray chosen(StatusCommand command)
{
    return "command " + QByteArray::number(static_cast<int>(command));
}

QColor middle(const QImage &image)
{
    return image.pixelColor(image.rect().center());
}

const QColor red(0xff, 0x3b, 0x30);
const QString login = QStringLiteral("التشغيل عند بدء تشغيل الجهاز");

} // namespace

class SystemTrayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatThePanelIsShown()
    {
        Fixture f;
        f.panel.appear();
        f.start(QStringLiteral("Bar: off|R&D_1 & Co: off"));
        QTRY_COMPARE(f.panel.items().size(), 1);
        QVERIFY(f.isAvailable());

        QCOMPARE(f.panel.toolTip(),
            QStringLiteral("Zemrak Printer\n\u26A0\uFE0E broken\n\u2022 Bar: off\n\u2022 R&D_1 & Co: off"));
        QList<QSize> sizes;
        for (const QImage &icon : f.panel.icons())
            sizes.append(icon.size());
        QCOMPARE(sizes, (QList<QSize>{{22, 22}, {33, 33}, {44, 44}, {64, 64}}));
        QCOMPARE(f.panel.icons().value(0).pixelColor(16, 5), red);

        // The second ampersand stays as it is; the first one, and underscores, are escaped for the way.
        QCOMPARE(f.panel.labels(),
            (QStringList{QStringLiteral("\u26A0\uFE0E broken"), QStringLiteral("   Bar: off"),
                QStringLiteral("   R_&D__1 & Co: off"), QString(), QStringLiteral("فتح النافذة"),
                QStringLiteral("فحص الاتصال"), QString(), login, QStringLiteral("إعادة تشغيل الخدمة"), QString(),
                QStringLiteral("خروج")}));
        const QList<TrayPanel::Entry> menu = f.panel.menu();
        QCOMPARE(middle(menu.at(0).icon), red);
        for (qsizetype i = 0; i < menu.size(); ++i) {
            QCOMPARE(menu.at(i).separator, menu.at(i).label.isEmpty());
            QCOMPARE(menu.at(i).enabled || menu.at(i).separator, i > 2);
            QCOMPARE(menu.at(i).checkable, i == 7);
        }
    }

    void whatThePersonChooses()
    {
        Fixture f;
        f.panel.appear();
        f.start(QStringLiteral("ok +approval"));
        QTRY_COMPARE(f.panel.items().size(), 1);
        const QList<std::pair<QString, StatusCommand>> commands{
            {QStringLiteral("فتح النافذة"), StatusCommand::ShowWindow},
            {QStringLiteral("فحص الاتصال"), StatusCommand::Scan}, {login, StatusCommand::ToggleLogin},
            {QStringLiteral("السماح من إعدادات النظام…"), StatusCommand::OpenLoginSettings},
            {QStringLiteral("إعادة تشغيل الخدمة"), StatusCommand::Restart},
            {QStringLiteral("خروج"), StatusCommand::Quit}};
        for (const auto &[label, command] : commands) {
            f.panel.choose(label);
            QCOMPARE(f.heard(), chosen(command));
        }
        f.panel.clickIcon();
        QCOMPARE(f.heard(), chosen(StatusCommand::ShowWindow));

        // The tick follows the fact and not the click.
        QVERIFY(f.panel.menu().at(6).checkable && !f.panel.menu().at(6).checked);
        QCOMPARE(f.tell(QStringLiteral("ok +login")), QByteArray("shown"));
        QTRY_VERIFY(f.panel.menu().at(6).checked);
    }

    void onlyWhatChangesIsSent()
    {
        Fixture f;
        f.panel.appear();
        f.start();
        QTRY_COMPARE(f.panel.items().size(), 1);
        const QList<TrayPanel::Entry> before = f.panel.menu();
        f.panel.forgetSignals();

        // Signals of one item arrive in order: were the repeats heard of, it would be before the change.
        for (int poll = 0; poll < 5; ++poll)
            QCOMPARE(f.tell(QStringLiteral("ok")), QByteArray("shown"));
        QCOMPARE(f.tell(QStringLiteral("ok +login")), QByteArray("shown"));
        QTRY_COMPARE(f.panel.signalsSeen(), QStringList{QStringLiteral("ItemsPropertiesUpdated")});
        QCOMPARE(f.tell(QStringLiteral("a|b +login")), QByteArray("shown"));

        // Whoever has the menu open keeps it: the same menu, and the same entries but for the one that is new.
        QTRY_COMPARE(f.panel.signalsSeen().count(QStringLiteral("LayoutUpdated")), 1);
        QTRY_COMPARE(f.panel.signalsSeen().count(QStringLiteral("NewIcon")), 1);
        QTRY_COMPARE(f.panel.signalsSeen().count(QStringLiteral("NewToolTip")), 1);
        QCOMPARE(f.panel.signalsSeen().count(QStringLiteral("NewMenu")), 0);
        QList<TrayPanel::Entry> after = f.panel.menu();
        QCOMPARE(after.takeAt(2).label, QStringLiteral("   b"));
        QCOMPARE(after.size(), before.size());
        for (qsizetype i = 0; i < after.size(); ++i)
            QCOMPARE(after.at(i).id, before.at(i).id);

        QCOMPARE(f.tell(QStringLiteral("ok")), QByteArray("shown"));
        QTRY_COMPARE(f.panel.labels().size(), before.size());
        QCOMPARE(middle(f.panel.menu().at(0).icon), QColor(0x34, 0xc7, 0x59));
    }

    // Nothing at first; a registrar first and the tray later; one that answers nothing at first.
    void panelThatComesLaterAndIsRestarted()
    {
        using enum TrayPanel::Registrar;
        for (const TrayPanel::Registrar first : {WithHost, WithoutHost, Silent}) {
            const InRow row(QByteArray::number(int(first)));
            Fixture f;
            if (first == Silent)
                f.panel.appear(first);
            f.start();
            QVERIFY(!f.isAvailable());
            if (first != Silent)
                f.panel.appear(first);
            if (first != WithHost) {
                QTRY_VERIFY(f.panel.wasAsked());
                QVERIFY(!f.isAvailable());
                f.panel.showItems();
            }
            QTRY_COMPARE(f.panel.items().size(), 1);
            QCOMPARE(f.panel.labels().size(), 10);

            f.panel.goAway();
            QTRY_VERIFY(!f.isAvailable());
            QCOMPARE(f.tell(QStringLiteral("meanwhile")), QByteArray("shown"));
            f.panel.appear();
            QTRY_COMPARE(f.panel.items().size(), 1);
            QVERIFY(f.panel.toolTip().endsWith(QStringLiteral("meanwhile")));
            QCOMPARE(f.panel.labels().value(1), QStringLiteral("   meanwhile"));
            f.panel.choose(QStringLiteral("خروج"));
            QCOMPARE(f.heard(), chosen(StatusCommand::Quit));
        }
    }

    void trayOfTheOlderKind()
    {
        for (const auto &[bus, later] :
            {std::pair(false, false), std::pair(false, true), std::pair(true, false), std::pair(true, true)}) {
            const InRow row(QByteArray(bus ? "nothing on the bus" : "no bus") + (later ? ", panel later" : ""));
            Fixture withoutDisplay({.x11 = false, .bus = bus});
            withoutDisplay.start();
            QCOMPARE(withoutDisplay.tell(QStringLiteral("a")), QByteArray("shown"));
            QVERIFY(!withoutDisplay.isAvailable());

            Fixture f({.bus = bus});
            auto panel = later ? nullptr : std::make_unique<X11Panel>(f.display);
            f.start();
            if (later) {
                QVERIFY(!f.isAvailable());
                panel = std::make_unique<X11Panel>(f.display);
            }
            QTRY_COMPARE(panel->dockedIcons(), 1);
            QVERIFY(f.isAvailable());
            panel.reset(); // the panel is restarted
            QTRY_VERIFY(!f.isAvailable());
            panel = std::make_unique<X11Panel>(f.display);
            QTRY_COMPARE(panel->dockedIcons(), 1);
        }
    }

    void betterTrayIsWaitedFor()
    {
        Fixture f({.patience = std::chrono::minutes(1)});
        X11Panel older(f.display);
        f.start();
        f.panel.appear();
        QTRY_COMPARE(f.panel.items().size(), 1);
        QCOMPARE(older.dockedIcons(), 0);
    }
};

ZEMRAK_TEST(systemtray, SystemTrayTest, QGuiApplication)
ZEMRAK_TEST_PROGRAM(application, runApplication)

#include "tst_systemtray.moc"
