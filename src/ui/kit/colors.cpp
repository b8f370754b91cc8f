#include "ui/kit/colors.h"

#include <algorithm>
#include <cmath>

namespace zemrak {

namespace {

constexpr double legible = 4.5; // for text of ordinary size

bool isHexDigit(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor mix(const QColor &from, const QColor &to, double share)
{
    const auto channel = [share](float a, float b) { return static_cast<float>(a + (b - a) * share); };
    return QColor::fromRgbF(
        channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()), channel(from.blueF(), to.blueF()));
}

} // namespace

QColor colorFromHex(QStringView hex)
{
    QStringView digits = hex.startsWith(u'+') ? hex.mid(1) : hex;
    bool ok = !digits.isEmpty() && std::all_of(digits.begin(), digits.end(), isHexDigit);
    const uint value = ok ? digits.toUInt(&ok, 16) : 0;
    return ok ? QColor::fromRgb((value >> 16) & 0xff, (value >> 8) & 0xff, value & 0xff) : QColor(Qt::black);
}

double contrast(const QColor &one, const QColor &other)
{
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

QColor readable(const QColor &color, const QColor &ground, const QColor &ink)
{
    constexpr int steps = 20;
    for (int step = 0; step < steps; ++step) {
        const QColor candidate = mix(color, ink, double(step) / steps);
        if (contrast(candidate, ground) >= legible)
            return candidate;
    }
    return ink;
}

} // namespace zemrak
