#include "ui/presenters/text/wholenumber.h"

#include <algorithm>

namespace zemrak {

std::optional<qint64> wholeNumber(const QString &typed)
{
    QString latin = typed;
    for (QChar &letter : latin) {
        if (letter.category() == QChar::Number_DecimalDigit)
            letter = QLatin1Char(char('0' + letter.digitValue()));
    }
    // The conversion alone would let blanks pass.
    const QStringView digits
        = QStringView(latin).sliced(latin.startsWith(QLatin1Char('+')) || latin.startsWith(QLatin1Char('-')) ? 1 : 0);
    const bool plain = !digits.isEmpty() && std::all_of(digits.begin(), digits.end(), [](QChar digit) {
        return digit >= QLatin1Char('0') && digit <= QLatin1Char('9');
    });
    bool fits = false;
    const qint64 number = plain ? latin.toLongLong(&fits) : 0;
    return fits ? std::optional(number) : std::nullopt;
}

} // namespace zemrak
