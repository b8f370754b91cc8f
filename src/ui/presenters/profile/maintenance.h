#pragma once

#include <QList>
#include <QString>

namespace zemrak {

/// A one-off command to a printer.
struct Maintenance
{
    QString action; ///< as the service knows it
    QString title; ///< of its button
    QString okMessage;
    bool sendsPin = false; ///< the chosen drawer pin goes with it
    QString question; ///< asked before it is done; empty: it harms nothing
};

/// The commands that make sense for a printer of this type, in the order of their buttons.
[[nodiscard]] QList<Maintenance> maintenanceFor(const QString &printerType);

} // namespace zemrak
