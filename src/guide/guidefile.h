#pragma once

#include <QString>

namespace zemrak {

/// Writes the guide as Markdown to `path`, in UTF-8; a file that is there is replaced as a whole or not at all.
/// Returns why it could not be written, in English; empty when it was. Any thread.
[[nodiscard]] QString writeGuide(const QString &path);

} // namespace zemrak
