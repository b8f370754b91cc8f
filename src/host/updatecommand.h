#pragma once

#include <QString>

#include <optional>

namespace zemrak {

/// The four facts that install-update.sh works with, in the order of its arguments.
struct UpdateHandover
{
    QString newBundle; ///< path of the verified new bundle, as the service named it
    QString installedBundle; ///< path of the running bundle
    qint64 processId = 0; ///< of the running application; the script waits for its end
    QString version; ///< of the new bundle
};

/// The shell line that runs `script` detached. None when a path or the version could mean anything else to the shell
/// than itself: a path that is relative or holds a single quote or a control character; a version that is empty, holds
/// anything but ASCII letters, digits and `.-+_~`, or begins with `~`, which the shell would turn into a home folder.
[[nodiscard]] std::optional<QString> updateCommand(const QString &script, const UpdateHandover &handover);

} // namespace zemrak
