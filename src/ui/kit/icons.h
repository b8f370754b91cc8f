#pragma once

#include <QLatin1String>
#include <QStringView>

#include <span>

namespace zemrak {

/// One symbol the pages may name and the drawing that stands for it.
struct IconEntry
{
    QLatin1String symbol;
    QLatin1String file; ///< below resources/icons, without its suffix
    bool mirrors; ///< drawn for right to left; to be flipped where the layout runs the other way
};

[[nodiscard]] std::span<const IconEntry> iconTable();
/// Null for a symbol that has no drawing. The match is exact.
[[nodiscard]] const IconEntry *findIcon(QStringView symbol);

} // namespace zemrak
