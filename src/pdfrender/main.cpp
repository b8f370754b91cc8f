// pdfrender WIDTH MAX_PAGES < document.pdf > pictures
// Writes one binary grey picture ("P5 WIDTH HEIGHT 255", then the dots) per page, one after the other.
// Exit status: see Outcome; 64 for a wrong command line, 74 when the pictures cannot be written.

#include "pdfrender/limits.h"
#include "pdfrender/pages.h"

#include <charconv>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

namespace {

constexpr int kUsage = 64;
constexpr int kWriteFailed = 74;
constexpr int kMaxWidth = 4096;
constexpr int kMaxPages = 1000;
constexpr std::size_t kMaxBytes = std::size_t{64} << 20;

/** The number that the whole text is, 0 when it is none or out of range. */
int numberIn(std::string_view text, int least, int most)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc{} && end == text.data() + text.size();
    return isWhole && value >= least && value <= most ? value : 0;
}

void write(const zemrak::pdfrender::GreyPicture &picture)
{
    std::printf("P5 %d %d 255\n", picture.width, picture.height);
    std::fwrite(picture.dots.data(), 1, picture.dots.size(), stdout);
}

} // namespace

int main(int argc, char **argv)
{
    const int width = argc == 3 ? numberIn(argv[1], 8, kMaxWidth) : 0;
    const int maxPages = argc == 3 ? numberIn(argv[2], 1, kMaxPages) : 0;
    if (width == 0 || maxPages == 0) {
        std::fputs("usage: pdfrender WIDTH MAX_PAGES < document.pdf > pictures\n", stderr);
        return kUsage;
    }
    zemrak::pdfrender::limitThisProcess();
    std::ios::sync_with_stdio(false);
    const std::string document{std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()};
    if (document.size() > kMaxBytes)
        return static_cast<int>(zemrak::pdfrender::Outcome::Broken);
    const auto outcome = zemrak::pdfrender::drawPages(document, width, maxPages, write);
    const bool isWritten = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    return isWritten ? static_cast<int>(outcome) : kWriteFailed;
}
