#include "pdfrender/limits.h"

#include <sys/resource.h>

namespace zemrak::pdfrender {

namespace {

constexpr rlim_t kProcessorSeconds = 20;
constexpr rlim_t kMemoryBytes = rlim_t{1} << 30;

void limit(__rlimit_resource resource, rlim_t most)
{
    const rlimit bounds{.rlim_cur = most, .rlim_max = most};
    setrlimit(resource, &bounds);
}

} // namespace

void limitThisProcess()
{
    limit(RLIMIT_CPU, kProcessorSeconds);
    limit(RLIMIT_CORE, 0);
#ifndef __SANITIZE_ADDRESS__
    limit(RLIMIT_AS, kMemoryBytes);
#endif
}

} // namespace zemrak::pdfrender
