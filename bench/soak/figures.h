#pragma once

#include <QDBusConnection>
#include <QtGlobal>

namespace zemrak::soak {

/// What a process costs at one moment.
struct Figures
{
    qint64 ownKiB = 0; ///< memory that holds no file's content: heaps and stacks
    qint64 proportionalKiB = 0; ///< its memory, what it shares counted in part
    qint64 residentKiB = 0;
    int files = 0; ///< open descriptors
    int threads = 0;
    int connections = 0; ///< to the session bus
    int matches = 0; ///< what it has the bus listen for, over all its connections

    /// No more of anything that the process can choose than in `other`.
    [[nodiscard]] bool isWithin(const Figures &other) const
    {
        return ownKiB <= other.ownKiB && residentKiB <= other.residentKiB && files <= other.files
            && threads <= other.threads && connections <= other.connections && matches <= other.matches;
    }
    /// Of a process that lives; all zero of one that does not.
    [[nodiscard]] static Figures of(qint64 processId, const QDBusConnection &bus);
};

} // namespace zemrak::soak
