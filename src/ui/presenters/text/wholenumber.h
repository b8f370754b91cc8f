#pragma once

#include <QString>

#include <optional>

namespace zemrak {

/// The number that `typed` is from its first to its last character: decimal digits of any script after an optional
/// sign. None for anything else, blanks included, and for what does not fit.
[[nodiscard]] std::optional<qint64> wholeNumber(const QString &typed);

} // namespace zemrak
