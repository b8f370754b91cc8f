#pragma once

#include "base/clock.h"
#include "health/notifier.h"
#include "model/alertitem.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

namespace zemrak {

/// Decides which alerts become notifications, so that each is announced once, also across restarts, and taken back when
/// its problem has ended. Receipts that a printer has lost share one notification, which says how many they are.
class AlertDelivery
{
public:
    /// At most this many ids are stored.
    static constexpr qsizetype storedIds = 300;

    /// `notified` are the ids stored by the run before; `store` keeps them for the next one.
    AlertDelivery(Notifier &notifier, Clock &clock, const QStringList &notified,
        std::function<void(const QStringList &ids)> store);

    /// Called with the service's list after every successful fetch. On the first call, alerts that are more than a
    /// minute old are passed over: they were raised while nobody watched.
    void deliver(const QList<AlertItem> &alerts);

    [[nodiscard]] const QSet<QString> &notified() const { return m_notified; }

private:
    void seed(const QList<AlertItem> &alerts);
    [[nodiscard]] bool announce(const QList<AlertItem> &alerts);
    [[nodiscard]] bool retract(const QList<AlertItem> &alerts);
    void save() const;

    Notifier &m_notifier;
    Clock &m_clock;
    QSet<QString> m_notified;
    std::function<void(const QStringList &ids)> m_store;
    bool m_seeded = false;
};

/// Whether an alert that is new to the application is told to the person.
[[nodiscard]] bool shouldAnnounce(const AlertItem &alert, const QSet<QString> &notified);

} // namespace zemrak
