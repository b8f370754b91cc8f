#pragma once

#include "host/desktop.h"

#include <QList>
#include <QStringList>

namespace zemrak::linux_ {

/// The command lines that may open `pane`, best first, for the desktops that XDG_CURRENT_DESKTOP names ("a:b"). The
/// programs need not be installed. An unknown desktop gets those that belong to no desktop.
[[nodiscard]] QList<QStringList> settingsPrograms(Desktop::SettingsPane pane, const QString &currentDesktop);

} // namespace zemrak::linux_
