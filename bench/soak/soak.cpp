#include "soak/soak.h"

#include "soak/wait.h"

#include <QElapsedTimer>

#include <algorithm>
#include <csignal>

namespace zemrak::soak {

namespace {

using namespace std::chrono_literals;

const QString counterName = QStringLiteral("Counter");
const QString kitchenName = QStringLiteral("Kitchen");

// Allocators keep some of what they were given back, Qt the names it has looked up (2 KiB an opening at first, less and
// less later), and the service's engine tidies up when it likes. More than 6 KiB an opening is a leak.
constexpr Limits programLimits{.memoryKiB = 3 * 1024};
constexpr Limits serviceLimits{.memoryKiB = 12 * 1024};

constexpr qint64 recoveryAim = 5000; ///< milliseconds

QString timesOf(const QList<qint64> &values)
{
    return values.isEmpty() ? QStringLiteral("never")
                            : QStringLiteral("p50 %1, p95 %2, max %3 ms")
                                  .arg(percentile(values, 50))
                                  .arg(percentile(values, 95))
                                  .arg(percentile(values, 100));
}

} // namespace

Soak::Soak(QString bundle, const Plan &plan)
    : m_bundle(std::move(bundle))
    , m_plan(plan)
{
}

void Soak::run(Report &report)
{
    QElapsedTimer all;
    all.start();
    m_shop.open(m_bundle);
    m_shop.addPrinter(counterName, m_counter);
    m_shop.addPrinter(kitchenName, m_kitchen);
    round(0); // what is loaded at the first use is no growth
    pass(m_plan.calm);
    m_programBegin = m_shop.settled(m_shop.programId(), {});
    for (QList<qint64> *times : {&m_recoveries, &m_wakings, &m_openings})
        times->clear();
    for (int number = 1; number <= m_plan.rounds; ++number) {
        QElapsedTimer elapsed;
        elapsed.start();
        round(number);
        if (number == m_plan.rounds / 2 + 1) { // the first round of a service that lives on
            pass(m_plan.calm);
            m_serviceBegin = m_shop.settled(m_shop.serviceId(), {});
        }
        pass(std::max(0ms, m_plan.rest - std::chrono::milliseconds(elapsed.elapsed())));
        if (m_plan.rounds >= 10 && number % (m_plan.rounds / 10) == 0) {
            const Figures now = m_shop.settled(m_shop.programId(), {});
            report.say(QStringLiteral("round %1 of %2, %3 s").arg(number).arg(m_plan.rounds).arg(all.elapsed() / 1000),
                QStringLiteral("program: %1 KiB of its own, %2 files").arg(now.ownKiB).arg(now.files));
        }
    }
    pass(m_plan.calm);
    m_programEnd = m_shop.settled(m_shop.programId(), m_programBegin);
    m_serviceEnd = m_shop.settled(m_shop.serviceId(), m_serviceBegin);
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
    m_shop.askForWindow();
    if (m_shop.expect(
            "the window opens", [this] { return m_shop.window().isOpen(); }, 10s))
        m_openings.append(elapsed.elapsed());
    pass(100ms); // it is drawn
    m_shop.window().close();
    m_shop.expect(
        "the window closes", [this] { return !m_shop.window().isOpen(); }, 10s);
}

void Soak::restartPanel()
{
    m_shop.panel().goAway();
    pass(200ms);
    m_shop.panel().appear();
    m_shop.expect(
        "the icon is in the new tray", [this] { return m_shop.panel().items().size() == 1; }, 10s);
    ++m_panels;
}

void Soak::restartNotifications()
{
    m_shop.loseNotifications();
    pass(200ms);
    m_shop.findNotifications();
    ++m_servers;
}

void Soak::killService()
{
    // With a receipt on its way, which may come out or not, but not twice.
    m_shop.expect(
        "a job is taken", [this] { return m_shop.order(counterName, nextNumber()); }, 0s);
    const qint64 victim = m_shop.serviceId();
    QElapsedTimer elapsed;
    elapsed.start();
    send(victim, SIGKILL);
    if (m_shop.expect(
            "the service answers after a kill", [&] { return m_shop.serviceId() != victim && m_shop.answers(); }, 30s))
        m_recoveries.append(elapsed.elapsed());
}

void Soak::suspend()
{
    const qint64 service = m_shop.serviceId();
    send(m_shop.programId(), SIGSTOP);
    send(service, SIGSTOP);
    pass(m_plan.suspend);
    send(service, SIGCONT);
    send(m_shop.programId(), SIGCONT);
    QElapsedTimer elapsed;
    elapsed.start();
    if (m_shop.expect(
            "all is well after a suspension",
            [this] { return m_shop.answers() && m_shop.status().value(QLatin1String("healthy")).toBool(); }, 15s))
        m_wakings.append(elapsed.elapsed());
    m_shop.expect(
        "a suspension costs no service", [&] { return m_shop.serviceId() == service; }, 0s);
}

QByteArray Soak::nextNumber()
{
    return Till::numberPrefix() + QByteArray::number(++m_receipts).rightJustified(6, '0');
}

void Soak::printOn(const QString &printer, const Till &till)
{
    const QByteArray number = nextNumber();
    m_shop.expect(
        "a job is taken", [&] { return m_shop.order(printer, number); }, 0s);
    m_shop.expect(
        "a receipt is printed", [&] { return till.papers().value(number) > 0; }, 15s);
}

void Soak::loseAndFindPrinter()
{
    const auto isIn = [this](const char *state) { return m_shop.stateOf(kitchenName) == QLatin1String(state); };
    m_shop.expect(
        "a printer is there again after a kill", [&] { return isIn("ready"); }, 15s);
    m_kitchen.switchOff();
    m_shop.expect(
        "a printer that went is missed", [&] { return isIn("offline"); }, 15s);
    if (!m_kitchen.switchOn())
        qFatal("The printer's port is taken");
    m_shop.expect(
        "a printer that came is found", [&] { return isIn("ready"); }, 15s);
    ++m_losses;
}

void Soak::tell(Report &report) const
{
    const auto twice
        = [](const Till &till) { return std::ranges::count_if(till.papers(), [](int times) { return times > 1; }); };
    const qint64 doubled = twice(m_counter) + twice(m_kitchen);
    report.heading(QStringLiteral("What happened"));
    report.say(QStringLiteral("receipts asked for, and printed"),
        QStringLiteral("%1, %2").arg(m_receipts).arg(m_counter.papers().size() + m_kitchen.papers().size()));
    report.say(QStringLiteral("times a printer went and came"), QString::number(m_losses));
    report.say(QStringLiteral("panels, notification servers restarted"),
        QStringLiteral("%1, %2").arg(m_panels).arg(m_servers));
    report.say(QStringLiteral("window opened"),
        QStringLiteral("%1 times: %2").arg(m_openings.size()).arg(timesOf(m_openings)));
    report.say(QStringLiteral("suspended"),
        QStringLiteral("%1 times, all well after %2").arg(m_wakings.size()).arg(timesOf(m_wakings)));
    report.heading(QStringLiteral("What must hold"));
    report.aim(
        QStringLiteral("receipts that came out twice"), QString::number(doubled), QStringLiteral("none"), doubled == 0);
    report.aim(QStringLiteral("what did not come about in time"), QString::number(m_shop.failures()),
        QStringLiteral("nothing"), m_shop.failures() == 0);
    report.aim(QStringLiteral("answers after %1 kills").arg(m_recoveries.size()), timesOf(m_recoveries),
        QStringLiteral("p95 %1 ms").arg(recoveryAim),
        !m_recoveries.isEmpty() && percentile(m_recoveries, 95) <= recoveryAim);
    report.aim(QStringLiteral("notifications posted"), QString::number(m_shop.notes()), QStringLiteral("some"),
        m_shop.notes() > 0);
    report.growth(QStringLiteral("program"), m_programBegin, m_programEnd, programLimits);
    report.growth(QStringLiteral("service"), m_serviceBegin, m_serviceEnd, serviceLimits);
}

} // namespace zemrak::soak
