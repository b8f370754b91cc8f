#pragma once

#include "base/clock.h"
#include "ui/presenters/alertlistmodel.h"

#include <QObject>

#include <functional>
#include <memory>

namespace zemrak {

/// What the page of alerts asks of the application.
struct AlertsActions
{
    std::function<void()> markRead;
    std::function<void()> clearHistory;
    std::function<void()> runScan;
    std::function<void()> installUpdate; ///< does nothing while an update is being installed
    std::function<void()> openLocalNetworkSettings;
};

/// The page of alerts. Main thread only.
class AlertsPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(zemrak::AlertListModel *alerts READ alerts CONSTANT)

public:
    AlertsPresenter(AlertsActions actions, Clock &clock, QObject *parent = nullptr);

    /// `all` are the application's own alerts and then the service's, `service` the service's alone.
    void show(const QList<AlertItem> &all, const QList<AlertItem> &service);
    [[nodiscard]] AlertListModel *alerts() { return &m_alerts; }

    /// Whoever has had the page before their eyes for a moment has read what the service had to say.
    Q_INVOKABLE void pageShown();
    Q_INVOKABLE void pageHidden();

    /// The button of an alert.
    Q_INVOKABLE void press(const QString &action);
    Q_INVOKABLE void markAllRead();
    Q_INVOKABLE void clearHistory();

Q_SIGNALS:
    /// The window is to show the page of this identifier.
    void pageRequested(const QString &page);

private:
    AlertsActions m_actions;
    AlertListModel m_alerts;
    std::unique_ptr<Timer> m_reading;
    bool m_unread = false; ///< one of the service's is
};

} // namespace zemrak
