#pragma once

#include <cstdio>
#include <cstdlib>

namespace zemrak::fuzz {

/// Ends the program when what must hold of every input does not: the input is a finding.
inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "Does not hold: %s\n", what);
    std::abort();
}

} // namespace zemrak::fuzz
