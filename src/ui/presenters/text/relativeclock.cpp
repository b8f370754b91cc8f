#include "ui/presenters/text/relativeclock.h"

namespace zemrak {

using namespace std::chrono_literals;

RelativeClock::RelativeClock(Clock &clock, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_timer(clock.makeTimer(Clock::Repeat::Always, [this] { catchUp(); }))
    , m_now(clock.wallTime())
{
}

void RelativeClock::setActive(bool active)
{
    if (active == isActive())
        return;
    if (active) {
        m_timer->start(1s);
        catchUp();
    } else {
        m_timer->stop();
    }
    Q_EMIT activeChanged();
}

void RelativeClock::catchUp()
{
    const qint64 now = m_clock.wallTime();
    if (now == m_now)
        return;
    m_now = now;
    Q_EMIT moved(now);
}

} // namespace zemrak
