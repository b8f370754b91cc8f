#include "health/statusbarcontroller.h"
#include "platform/linux/systemtray.h"
#include "support/privatebus.h"
#include "support/privatedisplay.h"
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

void say(const std::string &line)
{
    std::cout << line << std::endl;
}

class ToldWhatToShow
{
public:
    explicit ToldWhatToShow(std::chrono::milliseconds patience)
        : m_tray(patience)
        , m_controller(m_tray, QImage())
    {
        QObject::connect(&m_controller, &StatusBarController::commandChosen, &m_controller,
            [](StatusCommand command) { say("command " + std::to_string(static_cast<int>(command))); });
    }

    void obey(const QString &order)
    {
        const QString what = order.section(QLatin1Char(' '), 0, 0);
        const QString rest = order.section(QLatin1Char(' '), 1);
        if (what == QLatin1String("available")) {
            say(m_tray.isAvailable() ? "available" : "unavailable");
            return;
        }
        if (what == QLatin1String("fine"))
            m_health = {.ok = true, .headline = QStringLiteral("fine"), .problems = {}, .connected = rest.toInt()};
        else if (what == QLatin1String("problems"))
            m_health = {.ok = false, .headline = QStringLiteral("broken"), .problems = rest.split(QLatin1Char('|'))};
        else if (what == QLatin1String("login"))
            m_login = rest == QLatin1String("on");
        else if (what == QLatin1String("approval"))
            m_approval = rest == QLatin1String("on");
        m_controller.update(m_health, m_login, m_approval);
        say("shown");
    }

private:
    SystemTray m_tray;
    StatusBarController m_controller;
    HealthSummary m_health{.ok = true, .headline = QStringLiteral("fine"), .problems = {}, .connected = 1};
    bool m_login = false;
    bool m_approval = false;
};

int runApplication(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    ToldWhatToShow told{std::chrono::milliseconds(QByteArray(argv[2]).toInt())};
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &input, [&told] {
        std::string line;
        if (!std::getline(std::cin, line))
            QCoreApplication::quit();
        else
            told.obey(QString::fromStdString(line));
    });
    return QApplication::exec();
}

class Application
{
public:
    Application(const QString &platform, const QString &display, const QString &busAddress,
        std::chrono::milliseconds patience = std::chrono::milliseconds(50))
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
        environment.insert(QStringLiteral("DISPLAY"), display);
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtime.path());
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(),
            {QStringLiteral("application"), QString::number(patience.count())});
    }
    ~Application()
    {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(5000))
            m_process.kill();
        m_process.waitForFinished();
        if (m_process.exitStatus() != QProcess::NormalExit || m_process.exitCode() != 0)
            QTest::qFail("The application did not end well", __FILE__, __LINE__);
    }

    /// One order at a time: each is answered by a line.
    [[nodiscard]] QByteArray tell(const QString &order)
    {
        m_process.write(order.toUtf8() + '\n');
        return heard();
    }
    /// The next line it says; empty if none comes.
    [[nodiscard]] QByteArray heard()
    {
        if (!QTest::qWaitFor([this] { return m_process.canReadLine(); }, 10'000))
            return {};
        return m_process.readLine().trimmed();
    }

private:
    const QTemporaryDir m_runtime;
    QProcess m_process;
};

const QString noBus = QStringLiteral("unix:path=/nonexistent");

QByteArray chosen(StatusCommand command)
{
    return "command " + QByteArray::number(static_cast<int>(command));
}

QColor middle(const QImage &image)
{
    return image.pixelColor(image.rect().center());
}

} // namespace

class SystemTrayTest : public QObject
{
    Q_OBJECT

    const PrivateDisplay m_display;

    [[nodiscard]] Application start(const PrivateBus &bus) const
    {
        return {QStringLiteral("xcb"), m_display.name(), bus.address()};
    }

private Q_SLOTS:
    void whatThePanelIsShown()
    {
        const PrivateBus bus;
        TrayPanel panel(bus.address());
        panel.appear();
        Application application = start(bus);
        QCOMPARE(application.tell(QStringLiteral("problems Bar: off|R&D_1 & Co: off")), QByteArray("shown"));
        QTRY_COMPARE(panel.items().size(), 1);

        QCOMPARE(panel.toolTip(),
            QStringLiteral("Zemrak Printer\n\u26A0\uFE0E broken\n\u2022 Bar: off\n\u2022 R&D_1 & Co: off"));
        QList<QSize> sizes;
        for (const QImage &icon : panel.icons())
            sizes.append(icon.size());
        QCOMPARE(sizes, (QList<QSize>{{22, 22}, {33, 33}, {44, 44}, {64, 64}}));
        QCOMPARE(panel.icons().value(0).pixelColor(16, 5), QColor(0xff, 0x3b, 0x30));

        // The second ampersand stays as it is; the first one, and underscores, are escaped for the way.
        QCOMPARE(panel.labels(),
            (QStringList{QStringLiteral("\u26A0\uFE0E broken"), QStringLiteral("   Bar: off"),
                QStringLiteral("   R_&D__1 & Co: off"), QString(), QStringLiteral("فتح النافذة"),
                QStringLiteral("فحص الاتصال"), QString(), QStringLiteral("التشغيل عند بدء تشغيل الجهاز"),
                QStringLiteral("إعادة تشغيل الخدمة"), QString(), QStringLiteral("خروج")}));
        const QList<TrayPanel::Entry> menu = panel.menu();
        QCOMPARE(middle(menu.at(0).icon), QColor(0xff, 0x3b, 0x30));
        for (qsizetype i = 0; i < menu.size(); ++i) {
            QCOMPARE(menu.at(i).separator, menu.at(i).label.isEmpty());
            QCOMPARE(menu.at(i).enabled || menu.at(i).separator, i > 2);
            QCOMPARE(menu.at(i).checkable, i == 7);
        }
        QCOMPARE(application.tell(QStringLiteral("available")), QByteArray("available"));
    }

    void whatThePersonChooses()
    {
        const PrivateBus bus;
        TrayPanel panel(bus.address());
        panel.appear();
        Application application = start(bus);
        QCOMPARE(application.tell(QStringLiteral("approval on")), QByteArray("shown"));
        QTRY_COMPARE(panel.items().size(), 1);

        const QList<std::pair<QString, StatusCommand>> commands{
            {QStringLiteral("فتح النافذة"), StatusCommand::ShowWindow},
            {QStringLiteral("فحص الاتصال"), StatusCommand::Scan},
            {QStringLiteral("التشغيل عند بدء تشغيل الجهاز"), StatusCommand::ToggleLogin},
            {QStringLiteral("السماح من إعدادات النظام…"), StatusCommand::OpenLoginSettings},
            {QStringLiteral("إعادة تشغيل الخدمة"), StatusCommand::Restart},
            {QStringLiteral("خروج"), StatusCommand::Quit}};
        for (const auto &[label, command] : commands) {
            panel.choose(label);
            QCOMPARE(application.heard(), chosen(command));
        }
        panel.clickIcon();
        QCOMPARE(application.heard(), chosen(StatusCommand::ShowWindow));
    }

    void tickFollowsTheFactAndNotTheClick()
    {
        const PrivateBus bus;
        TrayPanel panel(bus.address());
        panel.appear();
        Application application = start(bus);
        QCOMPARE(application.tell(QStringLiteral("fine 3")), QByteArray("shown"));
        QTRY_COMPARE(panel.items().size(), 1);

        panel.choose(QStringLiteral("التشغيل عند بدء تشغيل الجهاز"));
        QCOMPARE(application.heard(), chosen(StatusCommand::ToggleLogin));
        QVERIFY(panel.menu().at(6).checkable && !panel.menu().at(6).checked);
        QCOMPARE(application.tell(QStringLiteral("login on")), QByteArray("shown"));
        QTRY_VERIFY(panel.menu().at(6).checked);
    }

    void onlyWhatChangesIsSent()
    {
        const PrivateBus bus;
        TrayPanel panel(bus.address());
        panel.appear();
        Application application = start(bus);
        QCOMPARE(application.tell(QStringLiteral("fine 3")), QByteArray("shown"));
        QTRY_COMPARE(panel.items().size(), 1);
        const QList<TrayPanel::Entry> before = panel.menu();
        panel.forgetSignals();

        // Signals of one item arrive in order: were the repeats heard of, it would be before the changes.
        for (int poll = 0; poll < 5; ++poll)
            QCOMPARE(application.tell(QStringLiteral("fine 3")), QByteArray("shown"));
        QCOMPARE(application.tell(QStringLiteral("login on")), QByteArray("shown"));
        QTRY_COMPARE(panel.signalsSeen(), QStringList{QStringLiteral("ItemsPropertiesUpdated")});
        QCOMPARE(application.tell(QStringLiteral("problems a|b")), QByteArray("shown"));
        QTRY_VERIFY(panel.labels().contains(QStringLiteral("   b")));

        // Whoever has the menu open keeps it: the same menu, and the same entries but for the one that is new.
        const QStringList sent = panel.signalsSeen();
        QCOMPARE(sent.count(QStringLiteral("NewMenu")), 0);
        QCOMPARE(sent.count(QStringLiteral("NewIcon")), 1);
        QCOMPARE(sent.count(QStringLiteral("NewToolTip")), 1);
        QCOMPARE(sent.count(QStringLiteral("LayoutUpdated")), 1);
        QList<TrayPanel::Entry> after = panel.menu();
        QCOMPARE(after.takeAt(2).label, QStringLiteral("   b"));
        QCOMPARE(after.size(), before.size());
        for (qsizetype i = 0; i < after.size(); ++i)
            QCOMPARE(after.at(i).id, before.at(i).id);
        QVERIFY(!before.at(6).checked && after.at(6).checked);

        QCOMPARE(application.tell(QStringLiteral("fine 3")), QByteArray("shown"));
        QTRY_COMPARE(panel.labels().size(), before.size());
        QCOMPARE(middle(panel.menu().at(0).icon), QColor(0x34, 0xc7, 0x59));
    }

    void panelThatComesLater_data()
    {
        QTest::addColumn<TrayPanel::Registrar>("first");
        QTest::newRow("nothing at first") << TrayPanel::Registrar::WithHost;
        QTest::newRow("a registrar first, the tray later") << TrayPanel::Registrar::WithoutHost;
    }
    void panelThatComesLater()
    {
        QFETCH(TrayPanel::Registrar, first);
        const PrivateBus bus;
        Application application = start(bus);
        QCOMPARE(application.tell(QStringLiteral("fine 1")), QByteArray("shown"));
        QCOMPARE(application.tell(QStringLiteral("available")), QByteArray("unavailable"));
        TrayPanel panel(bus.address());
        panel.appear(first);
        if (first == TrayPanel::Registrar::WithoutHost) {
            QCOMPARE(application.tell(QStringLiteral("available")), QByteArray("unavailable"));
            panel.showItems();
        }
        QTRY_COMPARE(panel.items().size(), 1);
        QCOMPARE(panel.labels().size(), 10);
    }

    void panelThatIsRestarted()
    {
        const PrivateBus bus;
        TrayPanel panel(bus.address());
        panel.appear();
        Application application = start(bus);
        QCOMPARE(application.tell(QStringLiteral("fine 1")), QByteArray("shown"));
        QTRY_COMPARE(panel.items().size(), 1);

        panel.goAway();
        QTRY_COMPARE(application.tell(QStringLiteral("available")), QByteArray("unavailable"));
        QCOMPARE(application.tell(QStringLiteral("problems meanwhile")), QByteArray("shown"));
        panel.appear();
        QTRY_COMPARE(panel.items().size(), 1);
        QVERIFY(panel.toolTip().endsWith(QStringLiteral("meanwhile")));
        QCOMPARE(panel.labels().value(1), QStringLiteral("   meanwhile"));
        panel.choose(QStringLiteral("خروج"));
        QCOMPARE(application.heard(), chosen(StatusCommand::Quit));
    }

    void withoutTray_data()
    {
        QTest::addColumn<QString>("platform");
        QTest::addColumn<bool>("bus");
        QTest::newRow("no bus, X11") << QStringLiteral("xcb") << false;
        QTest::newRow("no bus, no display") << QStringLiteral("offscreen") << false;
        QTest::newRow("no display") << QStringLiteral("offscreen") << true;
    }
    void withoutTray()
    {
        QFETCH(QString, platform);
        QFETCH(bool, bus);
        const PrivateBus privateBus;
        Application application(platform, m_display.name(), bus ? privateBus.address() : noBus);
        QCOMPARE(application.tell(QStringLiteral("fine 1")), QByteArray("shown"));
        QCOMPARE(application.tell(QStringLiteral("available")), QByteArray("unavailable"));
        QCOMPARE(application.tell(QStringLiteral("problems a")), QByteArray("shown"));
    }

    void panelThatHangsHoldsUpNothing()
    {
        const PrivateBus bus;
        TrayPanel panel(bus.address());
        panel.appear(TrayPanel::Registrar::Silent);
        Application application = start(bus);
        QCOMPARE(application.tell(QStringLiteral("fine 1")), QByteArray("shown"));
        QCOMPARE(application.tell(QStringLiteral("available")), QByteArray("unavailable"));
        panel.goAway();
        panel.appear();
        QTRY_COMPARE(panel.items().size(), 1);
    }

    void trayOfTheOlderKind_data()
    {
        QTest::addColumn<bool>("bus");
        QTest::addColumn<bool>("later");
        QTest::newRow("no bus") << false << false;
        QTest::newRow("no bus, panel later") << false << true;
        QTest::newRow("nothing on the bus") << true << false;
        QTest::newRow("nothing on the bus, panel later") << true << true;
    }
    void trayOfTheOlderKind()
    {
        QFETCH(bool, bus);
        QFETCH(bool, later);
        const PrivateBus privateBus;
        const PrivateDisplay display;
        auto panel = later ? nullptr : std::make_unique<X11Panel>(display);
        Application application(QStringLiteral("xcb"), display.name(), bus ? privateBus.address() : noBus);
        QCOMPARE(application.tell(QStringLiteral("fine 1")), QByteArray("shown"));
        if (later)
            panel = std::make_unique<X11Panel>(display);
        QTRY_COMPARE(panel->dockedIcons(), 1);
        QCOMPARE(application.tell(QStringLiteral("available")), QByteArray("available"));

        panel.reset(); // the panel is restarted
        QTRY_COMPARE(application.tell(QStringLiteral("available")), QByteArray("unavailable"));
        panel = std::make_unique<X11Panel>(display);
        QTRY_COMPARE(panel->dockedIcons(), 1);
    }

    void betterTrayIsWaitedFor()
    {
        const PrivateBus bus;
        const PrivateDisplay display;
        X11Panel older(display);
        Application application(QStringLiteral("xcb"), display.name(), bus.address(), std::chrono::minutes(1));
        QCOMPARE(application.tell(QStringLiteral("fine 1")), QByteArray("shown"));
        TrayPanel panel(bus.address());
        panel.appear();
        QTRY_COMPARE(panel.items().size(), 1);
        QCOMPARE(older.dockedIcons(), 0);
    }
};

int main(int argc, char *argv[])
{
    if (argc > 2 && qstrcmp(argv[1], "application") == 0)
        return runApplication(argc, argv);
    QGuiApplication application(argc, argv);
    SystemTrayTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_systemtray.moc"
