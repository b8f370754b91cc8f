#include "health/alertdelivery.h"

#include <algorithm>

namespace zemrak {

namespace {

constexpr double freshMs = 60'000;

} // namespace

bool shouldAnnounce(const AlertItem &alert, const QSet<QString> &notified)
{
    return !alert.read && !alert.resolvedAt && alert.severity != QLatin1String("info") && !notified.contains(alert.id);
}

AlertDelivery::AlertDelivery(
    Notifier &notifier, Clock &clock, const QStringList &notified, std::function<void(const QStringList &ids)> store)
    : m_notifier(notifier)
    , m_clock(clock)
    , m_notified(notified.cbegin(), notified.cend())
    , m_store(std::move(store))
{
}

void AlertDelivery::deliver(const QList<AlertItem> &alerts)
{
    if (!std::exchange(m_seeded, true))
        seed(alerts);
    const bool posted = announce(alerts);
    const bool retracted = retract(alerts);
    if (posted || retracted)
        save();
}

void AlertDelivery::seed(const QList<AlertItem> &alerts)
{
    const double now = static_cast<double>(m_clock.wallTime());
    for (const AlertItem &alert : alerts) {
        if (now - alert.createdAt > freshMs)
            m_notified.insert(alert.id);
    }
}

bool AlertDelivery::announce(const QList<AlertItem> &alerts)
{
    bool posted = false;
    for (const AlertItem &alert : alerts) {
        if (!shouldAnnounce(alert, m_notified))
            continue;
        m_notified.insert(alert.id);
        m_notifier.post(alert.id, alert.title, alert.message, alert.severity == QLatin1String("critical"));
        posted = true;
    }
    return posted;
}

bool AlertDelivery::retract(const QList<AlertItem> &alerts)
{
    QStringList ended;
    for (const AlertItem &alert : alerts) {
        if (alert.resolvedAt && m_notified.contains(alert.id))
            ended.append(alert.id);
    }
    if (!ended.isEmpty())
        m_notifier.retract(ended);
    return !ended.isEmpty();
}

void AlertDelivery::save() const
{
    // Which ones are left out when there are too many is decided by the set's own order, not by age.
    const QStringList ids(m_notified.cbegin(), m_notified.cend());
    m_store(ids.mid(std::max<qsizetype>(0, ids.size() - storedIds)));
}

} // namespace zemrak
