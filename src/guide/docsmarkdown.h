#pragma once

#include "guide/doctab.h"

namespace zemrak {

/// The service's base address, as the export names it.
[[nodiscard]] QString docBase();

/// One block as it stands in the export, with the blank line before it. Empty for a table without rows.
[[nodiscard]] QString blockMarkdown(const DocBlock &block);

/// The guide as one Markdown text.
[[nodiscard]] QString docsMarkdown(const QList<DocTab> &tabs);
/// The one that is built in.
[[nodiscard]] QString docsMarkdown();

} // namespace zemrak
