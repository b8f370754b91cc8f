// The main() of a room's tests: the first argument names the test class, the others are Qt Test's own.
#include "support/testmain.h"

#include <cstdio>
#include <map>
#include <string>

namespace zemrak::test {
namespace {

std::map<std::string, Run, std::less<>> &runs()
{
    static std::map<std::string, Run, std::less<>> all;
    return all;
}

} // namespace

bool addRun(const char *name, Run run)
{
    return runs().emplace(name, run).second;
}

} // namespace zemrak::test

int main(int argc, char *argv[])
{
    const auto &runs = zemrak::test::runs();
    const auto found = argc > 1 ? runs.find(argv[1]) : runs.end();
    if (found == runs.end()) {
        std::fputs(
            "The first argument is one of these; others, such as the name of a test function, may follow:\n", stderr);
        for (const auto &[name, run] : runs)
            std::fprintf(stderr, "  %s\n", name.c_str());
        return 64;
    }
    for (int at = 1; at < argc; ++at)
        argv[at] = argv[at + 1]; // the null at the end comes along
    return found->second(argc - 1, argv);
}
