// Feeds every file of the folders named on the command line to the target, once: its corpus as a test, for any
// compiler.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <sys/resource.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int main(int argc, char *argv[])
{
#ifndef __SANITIZE_ADDRESS__ // which reserves far more, and refuses too much by itself
    constexpr rlim_t most = rlim_t{2} << 30; // an input that asks for more is a finding
    const rlimit memory{.rlim_cur = most, .rlim_max = most};
    setrlimit(RLIMIT_AS, &memory);
#endif
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        std::vector<std::filesystem::path> files;
        for (const auto &entry : std::filesystem::directory_iterator(argv[i]))
            files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        for (const std::filesystem::path &path : files) {
            std::ifstream file(path, std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
            std::printf("%s: %zu bytes\n", path.c_str(), bytes.size());
            std::fflush(stdout); // said before it runs: the one that ends the program is the last that is named
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
            ++replayed;
        }
    }
    std::printf("%zu inputs\n", replayed);
    return replayed > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
