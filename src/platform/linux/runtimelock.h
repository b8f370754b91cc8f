#pragma once

#include <QString>

namespace zemrak::linux_ {

/// A lock on a file that the kernel gives up with the process, so that none is ever stale.
class RuntimeLock
{
public:
    RuntimeLock() = default;
    ~RuntimeLock();
    RuntimeLock(const RuntimeLock &) = delete;
    RuntimeLock &operator=(const RuntimeLock &) = delete;

    enum class Outcome
    {
        Taken,
        HeldByAnother,
        Unavailable, ///< the file cannot be made or locked at all
    };
    /// Never blocks.
    [[nodiscard]] Outcome tryLock(const QString &fileName);

private:
    int m_file = -1;
};

} // namespace zemrak::linux_
