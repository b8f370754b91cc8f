#include "soak/shop.h"

#include "platform/platform.h"
#include "soak/wait.h"
#include "support/wiredata.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace zemrak::soak {

namespace {

using namespace std::chrono_literals;

QDBusMessage callOf(const QString &interface, const QString &method)
{
    return QDBusMessage::createMethodCall(
        QStringLiteral("com.zemrak.Printer"), QStringLiteral("/com/zemrak/Printer"), interface, method);
}

void keepLeast(Figures &least, const Figures &now)
{
    least.ownKiB = std::min(least.ownKiB, now.ownKiB);
    least.proportionalKiB = std::min(least.proportionalKiB, now.proportionalKiB);
    least.residentKiB = std::min(least.residentKiB, now.residentKiB);
    least.files = std::min(least.files, now.files);
    least.threads = std::min(least.threads, now.threads);
    least.connections = std::min(least.connections, now.connections);
    least.matches = std::min(least.matches, now.matches);
}

} // namespace

void send(qint64 processId, int signal)
{
    if (processId > 0) // 0 would be everybody
        ::kill(static_cast<pid_t>(processId), signal);
}

Shop::Shop()
    : m_window(m_display.name())
    , m_panel(m_bus.address())
    , m_observer(QDBusConnection::connectToBus(m_bus.address(), QStringLiteral("observer")))
    , m_service(m_home.filePath(QStringLiteral("Library/Application Support/Zemrak Local Print/admin.token")))
{
    m_panel.appear();
    findNotifications();
}

Shop::~Shop()
{
    send(serviceId(), SIGCONT);
    send(programId(), SIGCONT);
    if (m_program.state() != QProcess::NotRunning)
        m_program.terminate();
    if (!m_program.waitForFinished(10'000))
        m_program.kill();
    m_program.waitForFinished();
}

void Shop::open(const QString &bundle)
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
    m_program.start(bundle + QStringLiteral("/bin/zemrak-printer"), QStringList());
    const bool serves = expect(
        "the service answers", [this] { return answers(); }, 30s);
    const bool shows = expect(
        "the window opens", [this] { return m_window.isOpen(); }, 10s);
    if (!serves || !shows)
        throw Ended{};
    pass(500ms); // it is drawn
    m_window.close();
    expect(
        "the window closes", [this] { return !m_window.isOpen(); }, 10s);
    expect(
        "the icon is in the tray", [this] { return m_panel.items().size() == 1; }, 10s);
}

bool Shop::expect(const char *what, const std::function<bool()> &holds, std::chrono::milliseconds patience)
{
    const bool came = waitUntil(holds, patience);
    if (!came) {
        ++m_failures;
        std::printf("  Did not come about in time: %s\n", what);
        std::fflush(stdout);
    }
    if (m_program.state() == QProcess::NotRunning) {
        std::puts("  The program has ended.");
        throw Ended{};
    }
    return came;
}

void Shop::addPrinter(const QString &name, Till &till)
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
    m_ids.insert(name, reportOf(name).value(QLatin1String("id")).toString());
}

bool Shop::order(const QString &printer, const QByteArray &number)
{
    QJsonObject receipt = test::storedObject(QStringLiteral("wire/designer-document.json"));
    receipt.insert(QStringLiteral("receiptNo"), QString::fromLatin1(number));
    return m_service
        .post(QStringLiteral("/admin/designer/print"),
            {{QStringLiteral("printer"), m_ids.value(printer)}, {QStringLiteral("doc"), receipt}})
        .has_value();
}

void Shop::askForWindow() const
{
    QDBusMessage call = callOf(QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
    call.setArguments({QVariantMap()});
    m_observer.send(call);
}

qint64 Shop::serviceId() const
{
    // Children are listed with the thread that started them.
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

bool Shop::answers()
{
    return m_service.get(QStringLiteral("/admin/state")).has_value();
}

QJsonObject Shop::status() const
{
    const QDBusPendingCall call
        = m_observer.asyncCall(callOf(QStringLiteral("com.zemrak.Printer.Status"), QStringLiteral("Report")), 5000);
    waitUntil([&call] { return call.isFinished(); }, 6s);
    const QDBusMessage answer = call.isFinished() ? call.reply() : QDBusMessage();
    return QJsonDocument::fromJson(answer.arguments().value(0).toString().toUtf8()).object();
}

QString Shop::stateOf(const QString &printer) const
{
    return reportOf(printer).value(QLatin1String("state")).toString();
}

QJsonObject Shop::reportOf(const QString &printer) const
{
    for (const QJsonValue each : status().value(QLatin1String("printers")).toArray()) {
        if (each[QLatin1String("name")] == printer)
            return each.toObject();
    }
    return {};
}

Figures Shop::settled(qint64 processId, const Figures &wanted) const
{
    // A poll is under way in one moment and over in the next; what is always there is what counts.
    Figures least = Figures::of(processId, m_observer);
    waitUntil(
        [&] {
            pass(50ms);
            keepLeast(least, Figures::of(processId, m_observer));
            return least.isWithin(wanted);
        },
        5s);
    return least;
}

void Shop::loseNotifications()
{
    m_notes = notes();
    m_notifications.reset();
}

void Shop::findNotifications()
{
    m_notifications = std::make_unique<test::NotificationServer>(m_bus.address());
}

qsizetype Shop::notes() const
{
    return m_notes + (m_notifications ? m_notifications->notes().size() : 0);
}

} // namespace zemrak::soak
