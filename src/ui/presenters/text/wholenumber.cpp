#include "ui/presenters/text/wholenumber.h"

#include <algorithm>

namespace zemrak {

std::optional<qint64> wholeNumber(const QString &typed)
{
    // The conversion alone would let blanks pass.
    const QStringView digits
        = QStringView(typed).sliced(typed.startsWith(QLatin1Char('+')) || typed.startsWith(QLatin1Char('-')) ? 1 : 0);
    const bool plain = !digits.isEmpty() && std::all_of(digits.begin(), digits.end(), [](QChar digit) {
        return digit >= QLatin1Char('0') && digit <= QLatin1Char('9');
    });
    bool fits = false;
    const qint64 number = plain ? typed.toLongLong(&fits) : 0;
    return fits ? std::optional(number) : std::nullopt;
}

} // namespace zemrak
