#pragma once

#include <QByteArray>
#include <QString>

namespace zemrak {

/// Writes a file that only its owner may read (mode 0600), whole or not at all: until it is on the disk, what stood at
/// `path` stays as it was. Blocks as long as the disk does; for a worker thread.
/// Returns why it failed, in English; empty when the file is written.
[[nodiscard]] QString writePrivateFile(const QString &path, const QByteArray &content);

} // namespace zemrak
