#include "support/manualclock.h"

#include <QPointer>

#include <algorithm>

namespace zemrak::test {

class ManualClock::ManualTimer final : public Timer
{
public:
    ManualTimer(ManualClock &clock, Repeat repeat, Callback onFired)
        : m_clock(clock)
        , m_repeat(repeat)
        , m_onFired(std::move(onFired))
    {
        m_clock.m_timers.append(this);
    }
    ~ManualTimer() override { m_clock.m_timers.removeOne(this); }

    void start(std::chrono::milliseconds delay) override
    {
        m_delay = delay;
        m_due = m_clock.m_now + delay;
        m_order = ++m_clock.m_order;
        m_active = true;
    }
    void stop() override { m_active = false; }
    [[nodiscard]] bool isActive() const override { return m_active; }

    [[nodiscard]] bool isDueBefore(const ManualTimer &other) const
    {
        return std::pair(m_due, m_order) < std::pair(other.m_due, other.m_order);
    }
    [[nodiscard]] std::chrono::milliseconds due() const { return m_due; }

    void fire()
    {
        if (m_repeat == Repeat::Always)
            start(m_delay);
        else
            m_active = false;
        const Callback onFired = m_onFired; // it may destroy this timer
        onFired();
    }

private:
    ManualClock &m_clock;
    Repeat m_repeat;
    Callback m_onFired;
    std::chrono::milliseconds m_delay{0};
    std::chrono::milliseconds m_due{0};
    qint64 m_order = 0;
    bool m_active = false;
};

ManualClock::~ManualClock()
{
    // What after() made is nobody else's.
    const QList<ManualTimer *> left = m_timers;
    for (ManualTimer *timer : left)
        delete timer;
}

std::unique_ptr<Timer> ManualClock::makeTimer(Repeat repeat, Callback onFired)
{
    return std::make_unique<ManualTimer>(*this, repeat, std::move(onFired));
}

void ManualClock::after(std::chrono::milliseconds delay, QObject *context, Callback action)
{
    auto *timer = new ManualTimer(*this, Repeat::Once, [context = QPointer(context), action = std::move(action)] {
        if (context)
            action();
    });
    timer->start(delay);
}

void ManualClock::advance(std::chrono::milliseconds duration)
{
    const std::chrono::milliseconds end = m_now + duration;
    for (;;) {
        ManualTimer *next = nullptr;
        for (ManualTimer *timer : std::as_const(m_timers)) {
            if (timer->isActive() && timer->due() <= end && (next == nullptr || timer->isDueBefore(*next)))
                next = timer;
        }
        if (next == nullptr)
            break;
        m_now = std::max(m_now, next->due());
        next->fire();
    }
    m_now = end;
}

qsizetype ManualClock::pending() const
{
    return std::count_if(
        m_timers.cbegin(), m_timers.cend(), [](const ManualTimer *timer) { return timer->isActive(); });
}

} // namespace zemrak::test
