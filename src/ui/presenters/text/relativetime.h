#pragma once

#include <QString>

namespace zemrak {

/// How far a moment is from another, in the largest unit that fits, cut off rather than rounded.
struct RelativeStep
{
    enum class Unit
    {
        Now,
        Second,
        Minute,
        Hour,
        Day,
        Week,
        Month,
        Year
    };
    Unit unit = Unit::Now;
    qint64 value = 0; ///< negative: in the past

    bool operator==(const RelativeStep &) const = default;
};

// Moments are milliseconds since 1970-01-01 UTC; `then` as the service sends it, whatever number that is. Up to two
// seconds ahead count as now, since RelativeClock stands still between two ticks.

/// Texts made of equal steps are equal. Months and years are those of the calendar.
[[nodiscard]] RelativeStep relativeStep(double then, qint64 now);

/// In the digits of the Arabic locale, or in Western ones, for a line that holds others of those.
enum class Digits
{
    OfLocale,
    Western
};

/// `then` told relative to `now` in full Arabic words, such as "قبل ساعتين".
[[nodiscard]] QString relativeTime(double then, qint64 now, Digits digits = Digits::OfLocale);

/// How long ago `then` was, to follow the word "منذ", such as "ساعتين"; at least a second. In Western
/// digits.
[[nodiscard]] QString relativeAge(double then, qint64 now);

} // namespace zemrak
