#pragma once

#include "base/clock.h"

#include <QList>

namespace zemrak::test {

/// A clock that a test sets. Timers fire from within advance(), in the order of their due times.
class ManualClock final : public Clock
{
public:
    ManualClock() = default;
    ~ManualClock() override;

    [[nodiscard]] qint64 wallTime() const override { return m_wall + m_now.count(); }
    [[nodiscard]] std::chrono::milliseconds steadyTime() const override { return m_now; }
    [[nodiscard]] std::unique_ptr<Timer> makeTimer(Repeat repeat, Callback onFired) override;
    void after(std::chrono::milliseconds delay, QObject *context, Callback action) override;

    void advance(std::chrono::milliseconds duration);
    /// Timers that wait to fire.
    [[nodiscard]] qsizetype pending() const;

private:
    class ManualTimer;
    friend class ManualTimer;

    qint64 m_wall = 1'700'000'000'000;
    std::chrono::milliseconds m_now{0};
    QList<ManualTimer *> m_timers;
    qint64 m_order = 0;
};

} // namespace zemrak::test
