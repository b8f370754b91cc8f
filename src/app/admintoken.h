#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace zemrak {

/// The admin token as it goes into a header: the file's bytes exactly, blanks included. Only a line end that closes the
/// file is left out, as a header field cannot carry one. None when the file cannot be read, is no plain file, is longer
/// than 4 KiB, is not UTF-8, or holds a line end or NUL anywhere else, which would forge header lines.
[[nodiscard]] std::optional<QByteArray> readAdminToken(const QString &fileName);

} // namespace zemrak
