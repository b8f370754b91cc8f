#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

namespace zemrak {

/// A timer. It never fires from within start(), and never after stop() or its destruction.
class Timer
{
public:
    virtual ~Timer() = default;

    /// (Re)arms the timer: it fires once `delay` from now, or every `delay` if it was made to repeat.
    virtual void start(std::chrono::milliseconds delay) = 0;
    virtual void stop() = 0;
    [[nodiscard]] virtual bool isActive() const = 0;
};

/// Time as an input: every delay and every "now" of the application comes from here, so that tests can set it.
/// Belongs to the main thread; callbacks arrive there.
class Clock
{
public:
    enum class Repeat
    {
        Once,
        Always
    };
    using Callback = std::function<void()>;

    virtual ~Clock() = default;

    /// Milliseconds since 1970-01-01 UTC; may jump when the person sets the time.
    [[nodiscard]] virtual qint64 wallTime() const = 0;
    /// Monotonic clock: time since some fixed moment.
    [[nodiscard]] virtual std::chrono::milliseconds steadyTime() const = 0;

    [[nodiscard]] virtual std::unique_ptr<Timer> makeTimer(Repeat repeat, Callback onFired) = 0;
    /// Runs `action` once after `delay`, unless `context` is gone by then.
    virtual void after(std::chrono::milliseconds delay, QObject *context, Callback action) = 0;
};

/// The computer's own clock.
class SystemClock final : public Clock
{
public:
    [[nodiscard]] qint64 wallTime() const override;
    [[nodiscard]] std::chrono::milliseconds steadyTime() const override;
    [[nodiscard]] std::unique_ptr<Timer> makeTimer(Repeat repeat, Callback onFired) override;
    void after(std::chrono::milliseconds delay, QObject *context, Callback action) override;
};

} // namespace zemrak
