#pragma once

#include <QString>

namespace zemrak {

/// `text` for display in a right-to-left page: each of its lines that has an Arabic letter reads from the right, with
/// the Latin words, codes and addresses in it isolated; the other lines read from the left.
[[nodiscard]] QString mixedText(const QString &text);

/// A name for a place within an Arabic line, on whose order its own direction, whichever that is, then has no effect.
[[nodiscard]] QString isolatedName(const QString &name);

} // namespace zemrak
