#include "soak/soak.h"

#include "platform/platform.h"
#include "soak/wait.h"
#include "support/wiredata.h"

#include <QDBusMessage>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStandardPaths>

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace zemrak::soak {

namespace {

using namespace std::chrono_literals;

const QString counterName = QStringLiteral("Counter");
const QString kitchenName = QStringLiteral("Kitchen");

// Allocators keep some of what they were given back, and the engine of the service tidies up when it likes: less than
// this says nothing. A leak of a kilobyte an opening would be half a megabyte, of a page a round as much.
constexpr Limits programLimits{.memoryKiB = 3 * 1024};
constexpr Limits serviceLimits{.memoryKiB = 12 * 1024};

constexpr qint64 recoveryAim = 5000; ///< milliseconds

void send(qint64 processId, int signal)
{
    if (processId > 0) // 0 would be everybody
        ::kill(static_cast<pid_t>(processId), signal);
}

QString timesOf(const QList<qint64> &values)
{
    return values.isEmpty() ? QStringLiteral("never")
                            : QStringLiteral("p50 %1, p95 %2, max %3 ms")
                                  .arg(percentile(values, 50))
                                  .arg(percentile(values, 95))
                                  .arg(percentile(values, 100));
}

} // namespace

Soak::Soak(const QString &bundle, const Plan &plan)
    : m_plan(plan)
    , m_bundle(bundle)
    , m_window(m_display.name())
    , m_panel(m_bus.address())
    , m_notifications(std::make_unique<test::NotificationServer>(m_bus.address()))
    , m_observer(QDBusConnection::connectToBus(m_bus.address(), QStringLiteral("observer")))
    , m_service(m_home.filePath(QStringLiteral("Library/Application Support/Zemrak Local Print/admin.token")))
{
    m_panel.appear();
}

Soak::~Soak()
{
    send(serviceId(), SIGCONT);
    send(programId(), SIGCONT);
    if (m_program.state() != QProcess::NotRunning)
        m_program.terminate();
    if (!m_program.waitForFinished(10'000))
        m_program.kill();
    m_program.waitForFinished();
}

void Soak::start()
{
    QDir(m_home.path()).mkpath(QStringLiteral(".config/zemrak-printer"));
    QFile settings(m_home.filePath(QStringLiteral(".config/zemrak-printer/settings.ini")));
    if (!settings.open(QIODevice::WriteOnly) || settings.write("[General]\nonboardingDone=true\n") < 0)
        qFatal("The settings cannot be written");
    settings.close();

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), m_home.path());
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home.path());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home.filePath(QStringLiteral(".config")));
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_bus.address());
    environment.insert(QStringLiteral("DISPLAY"), m_display.name());
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("zemrak.*.info=false"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    m_program.setProcessEnvironment(environment);
    m_program.setProcessChannelMode(QProcess::ForwardedChannels);
    platform::makeChildGuard()->guard(m_program);
    m_program.start(m_bundle + QStringLiteral("/bin/zemrak-printer"), QStringList());
    if (!expect(
            "the service answers", [this] { return answers(); }, 30s)
        || !expect(
            "the window opens", [this] { return m_window.isOpen(); }, 10s))
        throw Ended{};
    pass(500ms);
    m_window.close();
    expect(
        "the window closes", [this] { return !m_window.isOpen(); }, 10s);
    expect(
        "the icon is in the tray", [this] { return m_panel.items().size() == 1; }, 10s);
    addPrinter(counterName, m_counter);
    addPrinter(kitchenName, m_kitchen);
}

void Soak::addPrinter(const QString &name, Till &till)
{
    if (!till.switchOn())
        qFatal("No port for a printer");
    const auto added = m_service.post(QStringLiteral("/admin/printers/add"),
        {{QStringLiteral("type"), QStringLiteral("net")}, {QStringLiteral("name"), name},
            {QStringLiteral("host"), QStringLiteral("127.0.0.1")}, {QStringLiteral("port"), till.port()}});
    expect(
        "a printer is added", [&added] { return added.has_value(); }, 0s);
    expect(
        "a printer is ready", [&] { return stateOf(name) == QLatin1String("ready"); }, 15s);
}

void Soak::run(Report &report)
{
    QElapsedTimer all;
    all.start();
    start();
    round(0); // what is loaded at the first use is no growth
    pass(m_plan.calm);
    m_programBegin = settled(&Soak::programId, {});
    m_failures = 0;
    for (QList<qint64> *times : {&m_recoveries, &m_wakings, &m_openingTimes})
        times->clear();
    for (int number = 1; number <= m_plan.rounds; ++number) {
        QElapsedTimer elapsed;
        elapsed.start();
        round(number);
        if (number == m_plan.rounds / 2 + 1) { // the first round of a service that lives on
            pass(m_plan.calm);
            m_serviceBegin = settled(&Soak::serviceId, {});
        }
        pass(std::max(0ms, m_plan.rest - std::chrono::milliseconds(elapsed.elapsed())));
        if (number % std::max(1, m_plan.rounds / 10) == 0) {
            const Figures now = Figures::of(programId(), m_observer);
            report.say(
                QStringLiteral("round %1 of %2, after %3 s").arg(number).arg(m_plan.rounds).arg(all.elapsed() / 1000),
                QStringLiteral("program %1 KiB of its own, %2 files, %3 threads")
                    .arg(now.ownKiB)
                    .arg(now.files)
                    .arg(now.threads));
        }
    }
    pass(m_plan.calm);
    m_programEnd = settled(&Soak::programId, m_programBegin);
    m_serviceEnd = settled(&Soak::serviceId, m_serviceBegin);
    tell(report);
}

void Soak::round(int number)
{
    const bool warmsUp = number == 0;
    for (int i = 0; i < m_plan.openings; ++i) {
        openAndClose();
        printOn(counterName, m_counter);
    }
    for (int i = 0; i < (warmsUp ? 1 : number <= m_plan.rounds / 2 ? m_plan.kills : 0); ++i)
        killService();
    loseAndFindPrinter();
    restartPanel();
    restartNotifications();
    printOn(kitchenName, m_kitchen);
    if (warmsUp || number % m_plan.suspendEvery == 0)
        suspend();
}

void Soak::openAndClose()
{
    QElapsedTimer elapsed;
    elapsed.start();
    QDBusMessage call
        = QDBusMessage::createMethodCall(QStringLiteral("com.zemrak.Printer"), QStringLiteral("/com/zemrak/Printer"),
            QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
    call.setArguments({QVariantMap()});
    m_observer.send(call);
    if (expect(
            "the window opens", [this] { return m_window.isOpen(); }, 10s))
        m_openingTimes.append(elapsed.elapsed());
    pass(100ms); // it is drawn
    m_window.close();
    expect(
        "the window closes", [this] { return !m_window.isOpen(); }, 10s);
}

void Soak::restartPanel()
{
    m_panel.goAway();
    pass(200ms);
    m_panel.appear();
    expect(
        "the icon is in the new tray", [this] { return m_panel.items().size() == 1; }, 10s);
    ++m_panels;
}

void Soak::restartNotifications()
{
    m_notes += m_notifications->notes().size();
    m_notifications.reset();
    pass(200ms);
    m_notifications = std::make_unique<test::NotificationServer>(m_bus.address());
    ++m_servers;
}

void Soak::killService()
{
    const qint64 victim = serviceId();
    QElapsedTimer elapsed;
    elapsed.start();
    send(victim, SIGKILL);
    if (expect(
            "the service answers after a kill", [&] { return serviceId() != victim && answers(); }, 30s))
        m_recoveries.append(elapsed.elapsed());
}

void Soak::suspend()
{
    const qint64 service = serviceId();
    send(programId(), SIGSTOP);
    send(service, SIGSTOP);
    pass(m_plan.suspend);
    send(service, SIGCONT);
    send(programId(), SIGCONT);
    QElapsedTimer elapsed;
    elapsed.start();
    if (expect(
            "all is well after a suspension",
            [&] { return answers() && status().value(QLatin1String("healthy")).toBool(); }, 15s))
        m_wakings.append(elapsed.elapsed());
    expect(
        "a suspension costs no service", [&] { return serviceId() == service; }, 0s);
}

void Soak::printOn(const QString &printer, Till &till)
{
    const QByteArray number = Till::numberPrefix() + QByteArray::number(++m_jobs).rightJustified(6, '0');
    QJsonObject receipt = test::storedObject(QStringLiteral("wire/designer-document.json"));
    receipt.insert(QStringLiteral("receiptNo"), QString::fromLatin1(number));
    QString id;
    for (const QJsonValue each : status().value(QLatin1String("printers")).toArray()) {
        if (each[QLatin1String("name")] == printer)
            id = each[QLatin1String("id")].toString();
    }
    expect(
        "a job is taken",
        [&] {
            return m_service
                .post(QStringLiteral("/admin/designer/print"),
                    {{QStringLiteral("printer"), id}, {QStringLiteral("doc"), receipt}})
                .has_value();
        },
        0s);
    expect(
        "a receipt is printed", [&] { return till.papers().value(number) > 0; }, 15s);
}

void Soak::loseAndFindPrinter()
{
    m_kitchen.switchOff();
    expect(
        "a printer that went is missed", [this] { return stateOf(kitchenName) == QLatin1String("offline"); }, 15s);
    if (!m_kitchen.switchOn())
        qFatal("The printer's port is taken");
    expect(
        "a printer that came is found", [this] { return stateOf(kitchenName) == QLatin1String("ready"); }, 15s);
    ++m_losses;
}

Figures Soak::settled(qint64 (Soak::*processId)() const, const Figures &wanted) const
{
    Figures last;
    // A poll is under way in one moment and over in the next; what stays is what counts.
    waitUntil(
        [&] {
            const Figures now = Figures::of((this->*processId)(), m_observer);
            if (last.files == 0)
                last = now;
            last.ownKiB = std::min(last.ownKiB, now.ownKiB);
            last.proportionalKiB = std::min(last.proportionalKiB, now.proportionalKiB);
            last.residentKiB = std::min(last.residentKiB, now.residentKiB);
            last.files = std::min(last.files, now.files);
            last.threads = std::min(last.threads, now.threads);
            last.connections = std::min(last.connections, now.connections);
            last.matches = std::min(last.matches, now.matches);
            pass(50ms);
            return wanted.files > 0 && last.files <= wanted.files && last.threads <= wanted.threads
                && last.ownKiB <= wanted.ownKiB && last.residentKiB <= wanted.residentKiB
                && last.matches <= wanted.matches;
        },
        5s);
    return last;
}

void Soak::tell(Report &report) const
{
    report.heading(QStringLiteral("What happened"));
    report.say(
        QStringLiteral("receipts printed"), QString::number(m_counter.papers().size() + m_kitchen.papers().size()));
    report.say(QStringLiteral("times a printer went and came"), QString::number(m_losses));
    report.say(QStringLiteral("notifications posted"), QString::number(m_notes + m_notifications->notes().size()));
    report.say(QStringLiteral("panels, notification servers restarted"),
        QStringLiteral("%1, %2").arg(m_panels).arg(m_servers));
    report.say(QStringLiteral("window opened"),
        QStringLiteral("%1 times: %2").arg(m_openingTimes.size()).arg(timesOf(m_openingTimes)));
    report.say(
        QStringLiteral("suspended"), QStringLiteral("%1 times: %2").arg(m_wakings.size()).arg(timesOf(m_wakings)));
    report.heading(QStringLiteral("What must hold"));
    const auto twice
        = [](const Till &till) { return std::ranges::count_if(till.papers(), [](int times) { return times > 1; }); };
    const qint64 doubled = twice(m_counter) + twice(m_kitchen);
    report.aim(
        QStringLiteral("receipts that came out twice"), QString::number(doubled), QStringLiteral("none"), doubled == 0);
    report.aim(QStringLiteral("things that did not come about in time"), QString::number(m_failures),
        QStringLiteral("none"), m_failures == 0);
    report.aim(QStringLiteral("the service answers after %1 kills").arg(m_recoveries.size()), timesOf(m_recoveries),
        QStringLiteral("p95 %1 ms").arg(recoveryAim),
        !m_recoveries.isEmpty() && percentile(m_recoveries, 95) <= recoveryAim);
    report.aim(
        QStringLiteral("notifications were posted"), QString::number(m_notes), QStringLiteral("some"), m_notes > 0);
    report.growth(QStringLiteral("program"), m_programBegin, m_programEnd, programLimits);
    report.growth(QStringLiteral("service"), m_serviceBegin, m_serviceEnd, serviceLimits);
}

qint64 Soak::serviceId() const
{
    // Its children are listed by the thread that started them.
    QFile children(QStringLiteral("/proc/%1/task/%1/children").arg(programId()));
    if (programId() == 0 || !children.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &child : children.readAll().simplified().split(' ')) {
        QFile command(QStringLiteral("/proc/%1/cmdline").arg(QString::fromLatin1(child)));
        if (command.open(QIODevice::ReadOnly) && command.readAll().contains("zemrak-local-print.mjs"))
            return child.toLongLong();
    }
    return 0;
}

QJsonObject Soak::status() const
{
    const QDBusMessage question = QDBusMessage::createMethodCall(QStringLiteral("com.zemrak.Printer"),
        QStringLiteral("/com/zemrak/Printer"), QStringLiteral("com.zemrak.Printer.Status"), QStringLiteral("Report"));
    const QDBusMessage answer = m_observer.call(question, QDBus::BlockWithGui, 5000);
    return QJsonDocument::fromJson(answer.arguments().value(0).toString().toUtf8()).object();
}

bool Soak::answers()
{
    return m_service.get(QStringLiteral("/admin/state")).has_value();
}

QString Soak::stateOf(const QString &printer) const
{
    for (const QJsonValue each : status().value(QLatin1String("printers")).toArray()) {
        if (each[QLatin1String("name")] == printer)
            return each[QLatin1String("state")].toString();
    }
    return {};
}

bool Soak::expect(const char *what, const std::function<bool()> &holds, std::chrono::milliseconds patience)
{
    const bool came = waitUntil(holds, patience);
    if (!came) {
        ++m_failures;
        std::printf("  Did not come about in time: %s\n", what);
        std::fflush(stdout);
    }
    if (m_program.state() == QProcess::NotRunning) {
        std::printf("  The program has ended.\n");
        throw Ended{};
    }
    return came;
}

} // namespace zemrak::soak
