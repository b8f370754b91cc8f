#include "designer/amounts.h"

#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zemrak {

namespace {

double roundHalfAway(double value)
{
    // From here on a double no longer holds the digits that decide a half.
    constexpr double largestWithHalves = 1e15;
    if (std::abs(value) < largestWithHalves)
        value = QByteArray::number(value, 'g', 15).toDouble();
    return std::round(value);
}

double finite(double value)
{
    constexpr double largest = std::numeric_limits<double>::max();
    return std::isnan(value) ? 0 : std::clamp(value, -largest, largest);
}

} // namespace

double num(QString text)
{
    static const QRegularExpression decimal(
        QStringLiteral("^[ \\t]*([+-]?(?:[0-9]+\\.?[0-9]*|\\.[0-9]+)(?:[eE][+-]?[0-9]+)?)[ \\t]*\\z"));
    const QRegularExpressionMatch match = decimal.match(text.replace(u',', u'.'));
    const double value = match.captured(1).toDouble(); // "" when nothing matched: 0
    return std::isfinite(value) ? value : 0;
}

double amountOf(const QString &text)
{
    return std::max(0.0, num(text));
}

QString inFull(double value)
{
    return QString::number(value, 'f', QLocale::FloatingPointShortest);
}

double roundToCents(double amount)
{
    const double cents = amount * 100;
    return std::isfinite(cents) ? roundHalfAway(cents) / 100 : finite(amount);
}

double percentOf(double amount, double percent)
{
    const double cents = amount * percent;
    return std::isfinite(cents) ? roundHalfAway(cents) / 100 : finite(amount * (percent / 100));
}

} // namespace zemrak
