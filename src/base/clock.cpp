#include "base/clock.h"

#include <QDateTime>
#include <QTimer>

namespace zemrak {

namespace {

class EventLoopTimer final : public Timer
{
public:
    EventLoopTimer(Clock::Repeat repeat, Clock::Callback onFired)
    {
        m_timer.setSingleShot(repeat == Clock::Repeat::Once);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::move(onFired));
    }

    void start(std::chrono::milliseconds delay) override { m_timer.start(delay); }
    void stop() override { m_timer.stop(); }
    [[nodiscard]] bool isActive() const override { return m_timer.isActive(); }

private:
    QTimer m_timer;
};

} // namespace

qint64 SystemClock::wallTime() const
{
    return QDateTime::currentMSecsSinceEpoch();
}

std::chrono::milliseconds SystemClock::steadyTime() const
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

std::unique_ptr<Timer> SystemClock::makeTimer(Repeat repeat, Callback onFired)
{
    return std::make_unique<EventLoopTimer>(repeat, std::move(onFired));
}

void SystemClock::after(std::chrono::milliseconds delay, QObject *context, Callback action)
{
    QTimer::singleShot(delay, context, std::move(action));
}

} // namespace zemrak
