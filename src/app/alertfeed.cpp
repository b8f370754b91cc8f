#include "app/alertfeed.h"

#include "health/alerts.h"
#include "model/wire.h"

namespace zemrak {

AlertFeed::AlertFeed(
    PrintService &service, std::function<bool()> mayAsk, AlertDelivery &delivery, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_service(service)
    , m_mayAsk(std::move(mayAsk))
    , m_delivery(delivery)
    , m_clock(clock)
    , m_launchedAt(clock.steadyTime())
{
}

std::optional<AlertItem> AlertFeed::local() const
{
    return localAlert({.answers = m_answers,
        .portConflict = m_portConflict,
        .silentFor = (m_clock.steadyTime() - m_launchedAt).count(),
        .now = m_clock.wallTime()});
}

QList<AlertItem> AlertFeed::all() const
{
    const std::optional<AlertItem> own = local();
    return own ? QList<AlertItem>({*own}) + m_alerts : m_alerts;
}

qint64 AlertFeed::badge() const
{
    return alertsBadge(local(), m_alerts);
}

void AlertFeed::setService(bool answers, bool portConflict)
{
    m_answers = answers;
    m_portConflict = portConflict;
    noteLocal();
}

void AlertFeed::refresh()
{
    noteLocal(); // silence becomes an alert with time alone
    if (!m_mayAsk())
        return;
    m_service.get(QStringLiteral("/admin/alerts"), PrintService::usualTimeout, this,
        [this, fetch = ++m_asked](const PrintService::Answer &answer) { take(fetch, answer); });
}

void AlertFeed::take(qint64 fetch, const PrintService::Answer &answer)
{
    // A slow answer must not bring back what a later one has marked, cleared or ended.
    if (!answer || fetch < m_taken)
        return;
    m_taken = fetch;
    // The same bytes again bring nothing to show, to announce or to take back.
    if (answer == m_body)
        return;
    std::optional<AlertsResult> result = decodeBody<AlertsResult>(*answer);
    if (!result)
        return;
    m_body = *answer;
    if (m_alerts != result->alerts) {
        m_alerts = std::move(result->alerts);
        Q_EMIT changed();
    }
    m_delivery.deliver(m_alerts);
}

void AlertFeed::markRead()
{
    tellAndRefresh(QStringLiteral("/admin/alerts/read"));
}

void AlertFeed::clearHistory()
{
    tellAndRefresh(QStringLiteral("/admin/alerts/clear"));
}

void AlertFeed::tellAndRefresh(const QString &path)
{
    m_service.post(
        path, QJsonObject{}, PrintService::usualTimeout, this, [this](const PrintService::Answer &) { refresh(); });
}

void AlertFeed::noteLocal()
{
    const std::optional<AlertItem> own = local();
    const QString id = own ? own->id : QString();
    if (std::exchange(m_shownLocal, id) != id)
        Q_EMIT changed();
}

} // namespace zemrak
