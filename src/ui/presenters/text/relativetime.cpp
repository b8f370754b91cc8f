#include "ui/presenters/text/relativetime.h"

#include <QDateTime>

#include <unicode/reldatefmt.h>

#include <cmath>
#include <memory>

namespace zemrak {

namespace {

using Unit = RelativeStep::Unit;

constexpr qint64 second = 1000;
constexpr qint64 minute = 60 * second;
constexpr qint64 hour = 60 * minute;
constexpr qint64 day = 24 * hour;
constexpr qint64 week = 7 * day;
constexpr qint64 shortestMonth = 28 * day;
constexpr double lastMoment = 8.64e15; // of any calendar

qint64 wholeMonths(qint64 from, qint64 to)
{
    const QDateTime begin = QDateTime::fromMSecsSinceEpoch(from, Qt::UTC);
    const QDateTime end = QDateTime::fromMSecsSinceEpoch(to, Qt::UTC);
    qint64 months = (end.date().year() - begin.date().year()) * 12 + end.date().month() - begin.date().month();
    if (begin.addMonths(int(months)) > end)
        --months;
    return months;
}

RelativeStep distance(qint64 from, qint64 to)
{
    const qint64 span = to - from;
    if (span < second)
        return {};
    if (span < minute)
        return {Unit::Second, span / second};
    if (span < hour)
        return {Unit::Minute, span / minute};
    if (span < day)
        return {Unit::Hour, span / hour};
    if (span < week)
        return {Unit::Day, span / day};
    const qint64 months = span < shortestMonth ? 0 : wholeMonths(from, to);
    if (months == 0)
        return {Unit::Week, span / week};
    return months < 12 ? RelativeStep{Unit::Month, months} : RelativeStep{Unit::Year, months / 12};
}

URelativeDateTimeUnit icuUnit(Unit unit)
{
    switch (unit) {
    case Unit::Now:
    case Unit::Second:
        return UDAT_REL_UNIT_SECOND;
    case Unit::Minute:
        return UDAT_REL_UNIT_MINUTE;
    case Unit::Hour:
        return UDAT_REL_UNIT_HOUR;
    case Unit::Day:
        return UDAT_REL_UNIT_DAY;
    case Unit::Week:
        return UDAT_REL_UNIT_WEEK;
    case Unit::Month:
        return UDAT_REL_UNIT_MONTH;
    case Unit::Year:
        break;
    }
    return UDAT_REL_UNIT_YEAR;
}

const icu::RelativeDateTimeFormatter &formatter()
{
    static const auto arabic = [] {
        UErrorCode status = U_ZERO_ERROR;
        auto made = std::make_unique<icu::RelativeDateTimeFormatter>(
            icu::Locale("ar"), nullptr, UDAT_STYLE_LONG, UDISPCTX_CAPITALIZATION_NONE, status);
        if (U_FAILURE(status))
            qFatal("No Arabic date texts: %s", u_errorName(status));
        return made;
    }();
    return *arabic;
}

QString text(const RelativeStep &step)
{
    icu::UnicodeString words;
    UErrorCode status = U_ZERO_ERROR;
    if (step.unit == Unit::Now)
        formatter().format(UDAT_DIRECTION_PLAIN, UDAT_ABSOLUTE_NOW, words, status);
    else
        formatter().formatNumeric(double(step.value), icuUnit(step.unit), words, status);
    return U_SUCCESS(status) ? QString::fromUtf16(words.getBuffer(), words.length()) : QString();
}

QString withWesternDigits(QString text)
{
    for (QChar &letter : text) {
        if (letter.isDigit())
            letter = QLatin1Char(char('0' + letter.digitValue()));
    }
    return text;
}

} // namespace

RelativeStep relativeStep(double then, qint64 now)
{
    if (!std::isfinite(then))
        return {};
    const auto moment = qint64(std::clamp(then, -lastMoment, lastMoment));
    if (moment <= now) {
        RelativeStep step = distance(moment, now);
        step.value = -step.value;
        return step;
    }
    return moment - now < 2 * second ? RelativeStep{} : distance(now, moment);
}

QString relativeTime(double then, qint64 now, Digits digits)
{
    const QString words = text(relativeStep(then, now));
    return digits == Digits::Western ? withWesternDigits(words) : words;
}

QString relativeAge(double then, qint64 now)
{
    RelativeStep step = relativeStep(then, now);
    if (step.value >= 0)
        step = {Unit::Second, -1};
    // "قبل" and "منذ" ask for the same case of the noun, so one can take the place of the other.
    const QString words = withWesternDigits(text(step));
    const QString before = QStringLiteral("قبل ");
    return words.startsWith(before) ? words.sliced(before.size()) : words;
}

} // namespace zemrak
