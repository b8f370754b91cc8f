#pragma once

#include <QString>

namespace zemrak {

/// Has `shell` carry out `line` (its "-c") in a session of its own, with nothing to read and the root folder as working
/// folder, so that it survives this process. True once the shell runs, whatever becomes of the line; false when there
/// is no such shell. Waits for no more than the launch.
[[nodiscard]] bool startDetachedShell(const QString &line, const QString &shell = QStringLiteral("/bin/bash"));

} // namespace zemrak
