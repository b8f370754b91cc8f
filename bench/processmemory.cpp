#include "processmemory.h"

#include <algorithm>
#include <chrono>
#include <fstream>

#include <unistd.h>

namespace zemrak::bench {

qint64 residentBytes()
{
    std::ifstream file("/proc/self/statm");
    qint64 total = 0;
    qint64 resident = 0;
    if (!(file >> total >> resident))
        qFatal("Cannot read the memory of this process");
    return resident * ::sysconf(_SC_PAGESIZE);
}

MemoryWatch::MemoryWatch()
    : m_peak(residentBytes())
    , m_thread([this](const std::stop_token &stop) {
        while (!stop.stop_requested()) {
            m_peak = std::max(m_peak.load(), residentBytes());
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    })
{
}

} // namespace zemrak::bench
