#include "pdfrender/pages.h"

#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-image.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace zemrak::pdfrender {

namespace {

constexpr double kPointsPerInch = 72;

/** The page's size as it is read, turned or not, in points. */
poppler::rectf sizeOf(const poppler::page &page)
{
    const poppler::rectf rect = page.page_rect();
    const auto turn = page.orientation();
    const bool isTurned = turn == poppler::page::landscape || turn == poppler::page::seascape;
    return isTurned ? poppler::rectf(0, 0, rect.height(), rect.width()) : rect;
}

/** The drawn page, exactly `width` dots wide: rounding may have made it a dot more or less. */
GreyPicture greyOf(const poppler::image &image, int width)
{
    GreyPicture picture{.width = width, .height = image.height(), .dots = {}};
    picture.dots.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(picture.height), 255);
    const auto copied = std::min(width, image.width());
    for (int row = 0; row < picture.height; ++row) {
        const char *from = image.const_data() + static_cast<std::ptrdiff_t>(row) * image.bytes_per_row();
        std::copy_n(from, copied, picture.dots.begin() + static_cast<std::ptrdiff_t>(row) * width);
    }
    return picture;
}

} // namespace

Outcome drawPages(
    const std::string &document, int width, int maxPages, const std::function<void(const GreyPicture &)> &take)
{
    poppler::set_debug_error_function([](const std::string &, void *) {}, nullptr);
    const std::unique_ptr<poppler::document> opened(
        poppler::document::load_from_raw_data(document.data(), static_cast<int>(document.size())));
    if (!opened)
        return Outcome::Broken;
    if (opened->is_locked())
        return Outcome::Locked;
    const int pages = opened->pages();
    if (pages < 1)
        return Outcome::Broken;
    if (pages > maxPages)
        return Outcome::TooManyPages;

    poppler::page_renderer renderer;
    renderer.set_render_hint(poppler::page_renderer::antialiasing);
    renderer.set_render_hint(poppler::page_renderer::text_antialiasing);
    renderer.set_image_format(poppler::image::format_gray8);
    for (int index = 0; index < pages; ++index) {
        const std::unique_ptr<poppler::page> page(opened->create_page(index));
        if (!page)
            return Outcome::Broken;
        const poppler::rectf size = sizeOf(*page);
        // Not a number fails this as well.
        if (!(size.width() >= 1 && size.height() >= 1))
            return Outcome::Broken;
        const double scale = width / size.width();
        if (size.height() * scale > kMaxRows)
            return Outcome::PageTooLarge;
        const poppler::image image = renderer.render_page(page.get(), kPointsPerInch * scale, kPointsPerInch * scale);
        if (!image.is_valid() || image.format() != poppler::image::format_gray8)
            return Outcome::Broken;
        take(greyOf(image, width));
    }
    return Outcome::Drawn;
}

} // namespace zemrak::pdfrender
