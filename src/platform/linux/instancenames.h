#pragma once

#include <QStandardPaths>
#include <QString>

namespace zemrak::linux_ {

// What the running copy is known by, to those who ask it something.

inline QString busName()
{
    return QStringLiteral("com.zemrak.Printer");
}

inline QString objectPath()
{
    return QStringLiteral("/com/zemrak/Printer");
}

inline QString statusInterface()
{
    return QStringLiteral("com.zemrak.Printer.Status");
}

inline QString runtimeFile(const QString &name)
{
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QLatin1Char('/') + name;
}

/// Locked by the running copy.
inline QString lockFile()
{
    return runtimeFile(QStringLiteral("zemrak-printer.lock"));
}

} // namespace zemrak::linux_
