#include "ui/presenters/alerts/alertspresenter.h"

#include <algorithm>

namespace zemrak {

using namespace std::chrono_literals;

AlertsPresenter::AlertsPresenter(const AlertsParts &parts, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_parts(parts)
    , m_alerts(clock.wallTime())
    , m_reading(clock.makeTimer(Clock::Repeat::Once, [this] {
        if (m_unread)
            markAllRead();
    }))
{
}

void AlertsPresenter::show(const QList<AlertItem> &all, const QList<AlertItem> &service)
{
    m_alerts.setAlerts(all);
    m_unread = std::any_of(service.cbegin(), service.cend(), [](const AlertItem &alert) { return !alert.read; });
}

void AlertsPresenter::pageShown()
{
    m_reading->start(1500ms);
}

void AlertsPresenter::pageHidden()
{
    m_reading->stop();
}

void AlertsPresenter::press(const QString &action)
{
    if (action == QLatin1String("scan")) {
        Q_EMIT pageRequested(QStringLiteral("overview"));
        m_parts.check.runScan();
    } else if (action == QLatin1String("printers") || action == QLatin1String("jobs")
        || action == QLatin1String("settings")) {
        Q_EMIT pageRequested(action); // the page of the same name
    } else if (action == QLatin1String("update")) {
        m_parts.updates.installUpdate();
    } else if (action == QLatin1String("network-permission")) {
        m_parts.systemSettings.open(Desktop::SettingsPane::Network);
    }
}

void AlertsPresenter::markAllRead()
{
    m_parts.feed.markRead();
}

void AlertsPresenter::clearHistory()
{
    m_parts.feed.clearHistory();
}

} // namespace zemrak
