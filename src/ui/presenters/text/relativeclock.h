#pragma once

#include "base/clock.h"

#include <QObject>

#include <memory>

namespace zemrak {

/// The moment that shown relative times refer to: it advances once a second, and only while the window is visible, so
/// that a hidden window costs nothing. Main thread only.
class RelativeClock : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool active READ isActive WRITE setActive NOTIFY activeChanged)

public:
    explicit RelativeClock(Clock &clock, QObject *parent = nullptr);

    [[nodiscard]] bool isActive() const { return m_timer->isActive(); }
    /// Turning it on catches up at once.
    void setActive(bool active);

    /// Milliseconds since 1970-01-01 UTC.
    [[nodiscard]] qint64 now() const { return m_now; }
    /// Sets it to the present, as when something new is about to be shown.
    void catchUp();

Q_SIGNALS:
    void activeChanged();
    void moved(qint64 now);

private:
    Clock &m_clock;
    std::unique_ptr<Timer> m_timer;
    qint64 m_now;
};

} // namespace zemrak
