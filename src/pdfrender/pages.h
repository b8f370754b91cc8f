#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zemrak::pdfrender {

/** How drawing ended; the values are the program's exit statuses. */
enum class Outcome
{
    Drawn = 0,
    Broken = 2,
    Locked = 3,
    TooManyPages = 4,
    PageTooLarge = 5
};

/** A picture in grey: rows from the top, one byte per dot, 0 = black. */
struct GreyPicture
{
    int width = 0;
    int height = 0;
    std::vector<unsigned char> dots;
};

/** Dots from the top to the bottom of one page at most. */
inline constexpr int kMaxRows = 24'000;

/**
 * Draws every page of a document as wide as asked, in order.
 * @param width dots, at least 8
 * @param maxPages a document with more pages is not begun
 * @param take called once per page; the pages before a failure have been handed over
 */
[[nodiscard]] Outcome drawPages(
    const std::string &document, int width, int maxPages, const std::function<void(const GreyPicture &)> &take);

} // namespace zemrak::pdfrender
