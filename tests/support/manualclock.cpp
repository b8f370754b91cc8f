#include "support/manualclock.h"

#include <QPointer>

#include <algorithm>

namespace zemrak::test {

class ManualClock::Hand final : public Timer
{
public:
    Hand(ManualClock &clock, Repeat repeat, Callback onFired)
        : m_clock(clock)
        , m_repeat(repeat)
        , m_onFired(std::move(onFired))
    {
        m_clock.m_hands.append(this);
    }
    ~Hand() override { m_clock.m_hands.removeOne(this); }

    void start(std::chrono::milliseconds delay) override
    {
        m_delay = delay;
        m_due = m_clock.m_now + delay;
        m_order = ++m_clock.m_order;
        m_active = true;
    }
    void stop() override { m_active = false; }
    [[nodiscard]] bool isActive() const override { return m_active; }

    [[nodiscard]] bool isDueBefore(const Hand &other) const
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
    const QList<Hand *> left = m_hands;
    for (Hand *hand : left)
        delete hand;
}

std::unique_ptr<Timer> ManualClock::makeTimer(Repeat repeat, Callback onFired)
{
    return std::make_unique<Hand>(*this, repeat, std::move(onFired));
}

void ManualClock::after(std::chrono::milliseconds delay, QObject *context, Callback action)
{
    auto *hand = new Hand(*this, Repeat::Once, [context = QPointer(context), action = std::move(action)] {
        if (context)
            action();
    });
    hand->start(delay);
}

void ManualClock::advance(std::chrono::milliseconds duration)
{
    const std::chrono::milliseconds end = m_now + duration;
    for (;;) {
        Hand *next = nullptr;
        for (Hand *hand : std::as_const(m_hands)) {
            if (hand->isActive() && hand->due() <= end && (next == nullptr || hand->isDueBefore(*next)))
                next = hand;
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
    return std::count_if(m_hands.cbegin(), m_hands.cend(), [](const Hand *hand) { return hand->isActive(); });
}

} // namespace zemrak::test
