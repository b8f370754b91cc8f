#include "health/alertdelivery.h"

#include <algorithm>

namespace zemrak {

namespace {

constexpr double freshMs = 60'000;

// One alert a receipt; those of one printer have one key.
bool isLostReceipt(const AlertItem &alert)
{
    return alert.key.startsWith(QLatin1String("job:")) && alert.key.endsWith(QLatin1String(":failed"));
}

// The ids of the alerts of that key that are still to be read.
QStringList lastingWith(const QString &key, const QList<AlertItem> &alerts)
{
    QStringList ids;
    for (const AlertItem &alert : alerts) {
        if (alert.key == key && !alert.read && !alert.resolvedAt)
            ids.append(alert.id);
    }
    return ids;
}

QStringList idsIn(QStringList ids, const QSet<QString> &set)
{
    ids.removeIf([&set](const QString &id) { return !set.contains(id); });
    return ids;
}

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
    const QSet<QString> before = m_notified;
    for (const AlertItem &alert : alerts) {
        if (!shouldAnnounce(alert, m_notified))
            continue;
        m_notified.insert(alert.id);
        const QStringList alike = isLostReceipt(alert) ? lastingWith(alert.key, alerts) : QStringList();
        for (const QString &id : alike)
            m_notified.insert(id);
        const QStringList shown = idsIn(alike, before);
        if (!shown.isEmpty())
            m_notifier.retract(shown);
        const QString title
            = alike.size() > 1 ? QStringLiteral("%1 (%2)").arg(alert.title).arg(alike.size()) : alert.title;
        m_notifier.post(alert.id, title, alert.message, alert.severity == QLatin1String("critical"));
    }
    return m_notified.size() > before.size();
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
