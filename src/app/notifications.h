#pragma once

#include "health/notifier.h"

#include <QObject>

#include <functional>
#include <utility>

namespace zemrak {

/// Whether this program may post notifications, as last asked, and what a person can do about it. Main thread only.
class Notifications : public QObject
{
    Q_OBJECT

public:
    /// `notifier` outlives this object.
    explicit Notifications(Notifier &notifier, QObject *parent = nullptr);

    /// As of the last refresh().
    [[nodiscard]] NotificationStatus status() const { return m_status; }
    void refresh();
    /// Asks for leave to post notifications; `done` may be empty.
    void request(std::function<void(bool granted)> done = {});
    /// Posts one that says that they work.
    void postTest();

Q_SIGNALS:
    void statusChanged();

private:
    Notifier &m_notifier;
    NotificationStatus m_status = NotificationStatus::NotDetermined;
};

} // namespace zemrak
