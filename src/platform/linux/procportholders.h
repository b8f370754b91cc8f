#pragma once

#include "host/portholders.h"

namespace zemrak::linux_ {

/// Reads the kernel's lists of sockets, then looks for the processes that have those sockets open. A process of
/// another user does not show its open files; its user stands in the list of sockets.
class ProcPortHolders final : public PortHolders
{
public:
    [[nodiscard]] QList<PortHolder> find(const QList<quint16> &ports, const std::atomic_bool &cancelled) const override;
};

/// A socket that listens.
struct ListeningSocket
{
    quint16 port = 0;
    quint32 userId = 0;
    QByteArray inode;

    bool operator==(const ListeningSocket &) const = default;
};

/// The sockets in a list of the form of /proc/net/tcp or tcp6 that listen on one of `ports` at an address that takes
/// in 127.0.0.1.
[[nodiscard]] QList<ListeningSocket> listeningSockets(const QByteArray &list, const QList<quint16> &ports);

/// What to call a process by the words of its command line: the program's file name and, for an interpreter, that of
/// its script. Nothing else of the command line, which may hold secrets.
[[nodiscard]] QString programName(const QByteArray &commandLine);

} // namespace zemrak::linux_
