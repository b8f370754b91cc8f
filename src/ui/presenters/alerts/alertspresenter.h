#pragma once

#include "app/alertfeed.h"
#include "app/systemsettings.h"
#include "base/clock.h"
#include "host/connectioncheck.h"
#include "host/updates.h"
#include "ui/presenters/alerts/alertlistmodel.h"

#include <QObject>

#include <memory>

namespace zemrak {

/// What the page of alerts asks of the application. All of it outlives the page.
struct AlertsParts
{
    AlertFeed &feed;
    ConnectionCheck &check;
    Updates &updates;
    SystemSettings &systemSettings;
};

/// The page of alerts. Main thread only.
class AlertsPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(zemrak::AlertListModel *alerts READ alerts CONSTANT)

public:
    /// `clock` outlives this object.
    AlertsPresenter(const AlertsParts &parts, Clock &clock, QObject *parent = nullptr);

    /// `all` are the application's own alerts and then the service's, `service` the service's alone.
    void show(const QList<AlertItem> &all, const QList<AlertItem> &service);
    [[nodiscard]] AlertListModel *alerts() { return &m_alerts; }

    /// Marks the service's alerts as read 1.5 s later, unless the page is hidden by then.
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
    AlertsParts m_parts;
    AlertListModel m_alerts;
    std::unique_ptr<Timer> m_reading;
    bool m_unread = false; ///< one of the service's is
};

} // namespace zemrak
