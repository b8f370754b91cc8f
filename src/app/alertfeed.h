#pragma once

#include "base/clock.h"
#include "health/alertdelivery.h"
#include "host/printservice.h"
#include "model/alertitem.h"

#include <QByteArray>
#include <QObject>

#include <functional>
#include <optional>

namespace zemrak {

/// The service's alerts, fetched with every poll, beside the one the application makes itself while the service is
/// silent. The service alone marks and removes its alerts; here they are only shown and handed to delivery. Main thread
/// only.
class AlertFeed : public QObject
{
    Q_OBJECT

public:
    /// `mayAsk`: whether the service has left the token without which it refuses. The others outlive this object.
    AlertFeed(PrintService &service, std::function<bool()> mayAsk, AlertDelivery &delivery, Clock &clock,
        QObject *parent = nullptr);

    /// The service's list as last fetched; a fetch that fails leaves it as it was.
    [[nodiscard]] const QList<AlertItem> &alerts() const { return m_alerts; }
    /// The local alert, made afresh, or nothing.
    [[nodiscard]] std::optional<AlertItem> local() const;
    /// The local alert, if there is one, and then the service's.
    [[nodiscard]] QList<AlertItem> all() const;
    [[nodiscard]] qint64 badge() const;

    /// What the local alert depends on besides the time.
    void setService(bool answers, bool portConflict);

    /// Fetches the list; does nothing while the service may not be asked.
    void refresh();
    void markRead();
    void clearHistory();

Q_SIGNALS:
    /// The list, or the presence of the local alert, is not what it was.
    void changed();

private:
    void take(qint64 fetch, const PrintService::Answer &answer);
    void tellAndRefresh(const QString &path);
    void noteLocal();

    PrintService &m_service;
    const std::function<bool()> m_mayAsk;
    AlertDelivery &m_delivery;
    Clock &m_clock;
    std::chrono::milliseconds m_launchedAt;
    QList<AlertItem> m_alerts;
    QByteArray m_body; ///< what m_alerts was decoded from
    qint64 m_asked = 0; ///< fetches so far, by which their answers are numbered
    qint64 m_taken = 0; ///< the latest fetch that was answered
    QString m_shownLocal; ///< id of the local alert last told of
    bool m_answers = false;
    bool m_portConflict = false;
};

} // namespace zemrak
