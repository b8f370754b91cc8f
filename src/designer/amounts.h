#pragma once

#include <QString>

namespace zemrak {

/// A number as typed: a comma counts as the decimal point, spaces and tabs around it do not count. Text that is not
/// one whole decimal number of Western digits gives 0, and so does one too large for a double.
[[nodiscard]] double num(QString text);

/// The same, a negative number giving 0.
[[nodiscard]] double amountOf(const QString &text);

/// A number of 0 or more in full, as it is printed: no exponent, as few digits as tell it from others.
[[nodiscard]] QString inFull(double value);

/// To the nearest hundredth, halves away from zero. Halves are those of the decimal number that the double stands for
/// (15 digits): 1.005 gives 1.01 although its nearest double lies a little below. Always finite.
[[nodiscard]] double roundToCents(double amount);

/// The `percent` of an amount, to the cent as above. Always finite.
[[nodiscard]] double percentOf(double amount, double percent);

} // namespace zemrak
