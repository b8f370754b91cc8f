#pragma once

#include <QtGlobal>

#include <atomic>
#include <thread>

namespace zemrak::bench {

/// Bytes of this process that are in memory now.
[[nodiscard]] qint64 residentBytes();

/// Looks at residentBytes() every millisecond, in a thread of its own, from its construction on.
class MemoryWatch
{
public:
    MemoryWatch();

    [[nodiscard]] qint64 peak() const { return m_peak; }

private:
    std::atomic<qint64> m_peak{0};
    std::jthread m_thread; ///< the last member: it is over before what it writes to is gone
};

} // namespace zemrak::bench
