#pragma once

#include "host/applicationbundle.h"

#include <QProcess>
#include <QString>
#include <QStringList>

namespace zemrak {

/// Where the service keeps its files, by agreement with it: the same path under the home folder on every platform.
[[nodiscard]] QString serviceConfigDir();

/// Sets the executable and the arguments that make the bundle's service do `arguments`.
void setServiceCommand(QProcess &process, const ApplicationBundle &bundle, const QStringList &arguments);

/// This process's environment, with what the service is asked to do while the application runs it.
[[nodiscard]] QProcessEnvironment serviceEnvironment(const ApplicationBundle &bundle);

} // namespace zemrak
