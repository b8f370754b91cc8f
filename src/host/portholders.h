#pragma once

#include <QList>
#include <QString>

#include <atomic>
#include <optional>

namespace zemrak {

/// A program that listens on a port of this computer, as far as it may be known: of another user's process the system
/// tells the user alone.
struct PortHolder
{
    quint16 port = 0;
    std::optional<qint64> processId;
    QString program; ///< such as "node zemrak-local-print.mjs"; empty when unknown
    std::optional<quint32> userId;
    QString user; ///< the login name; empty when there is none

    bool operator==(const PortHolder &) const = default;
};

/// Finds out who holds the ports that the print service wants.
class PortHolders
{
public:
    virtual ~PortHolders() = default;

    /// Who keeps this user from listening on 127.0.0.1 at one of `ports`, one entry a process or, where that is
    /// hidden, a user; empty when nobody does or it cannot be told. May take a second or two on a busy computer, so for
    /// a worker thread; ends early once `cancelled` is set. May be called from several threads at once.
    [[nodiscard]] virtual QList<PortHolder> find(
        const QList<quint16> &ports, const std::atomic_bool &cancelled) const = 0;
};

} // namespace zemrak
