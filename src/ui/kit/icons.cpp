#include "ui/kit/icons.h"

#include <algorithm>
#include <array>

namespace zemrak {

namespace {

// Filled shapes for states and tiles, bold strokes where the drawing is all stroke.
constexpr std::array<IconEntry, 67> table{{
    {QLatin1String("arrow.clockwise"), QLatin1String("arrow-clockwise-bold"), false},
    {QLatin1String("arrow.down.circle.fill"), QLatin1String("arrow-circle-down-fill"), false},
    {QLatin1String("barcode"), QLatin1String("barcode"), false},
    {QLatin1String("bell.badge.fill"), QLatin1String("bell-ringing-fill"), false},
    {QLatin1String("bell.fill"), QLatin1String("bell-fill"), false},
    {QLatin1String("book.fill"), QLatin1String("book-open-text-fill"), false},
    {QLatin1String("building.2.fill"), QLatin1String("buildings-fill"), false},
    {QLatin1String("cable.connector"), QLatin1String("usb"), false},
    {QLatin1String("cart.fill"), QLatin1String("shopping-cart-fill"), false},
    {QLatin1String("checkmark"), QLatin1String("check-bold"), false},
    {QLatin1String("checkmark.circle.fill"), QLatin1String("check-circle-fill"), false},
    {QLatin1String("checkmark.seal.fill"), QLatin1String("seal-check-fill"), false},
    {QLatin1String("checkmark.shield"), QLatin1String("shield-check"), false},
    {QLatin1String("checkmark.shield.fill"), QLatin1String("shield-check-fill"), false},
    {QLatin1String("chevron.down"), QLatin1String("caret-down-bold"), false},
    {QLatin1String("chevron.left"), QLatin1String("caret-left-bold"), true},
    {QLatin1String("chevron.left.forwardslash.chevron.right"), QLatin1String("code-bold"), false},
    {QLatin1String("chevron.right"), QLatin1String("caret-right-bold"), true},
    {QLatin1String("circle.fill"), QLatin1String("circle-fill"), false},
    {QLatin1String("clock.arrow.circlepath"), QLatin1String("clock-counter-clockwise-bold"), false},
    {QLatin1String("curlybraces"), QLatin1String("brackets-curly"), false},
    {QLatin1String("doc.on.doc"), QLatin1String("copy"), false},
    {QLatin1String("doc.richtext.fill"), QLatin1String("receipt-fill"), false},
    {QLatin1String("doc.text"), QLatin1String("file-text"), false},
    {QLatin1String("dot.radiowaves.left.and.right"), QLatin1String("broadcast-bold"), false},
    {QLatin1String("exclamationmark.triangle"), QLatin1String("warning"), false},
    {QLatin1String("exclamationmark.triangle.fill"), QLatin1String("warning-fill"), false},
    {QLatin1String("eye.fill"), QLatin1String("eye-fill"), false},
    {QLatin1String("flag.checkered"), QLatin1String("flag-checkered"), false},
    {QLatin1String("gearshape.fill"), QLatin1String("gear-six-fill"), false},
    {QLatin1String("globe"), QLatin1String("globe"), false},
    {QLatin1String("info.circle"), QLatin1String("info"), false},
    {QLatin1String("info.circle.fill"), QLatin1String("info-fill"), false},
    {QLatin1String("keyboard"), QLatin1String("keyboard"), false},
    {QLatin1String("link"), QLatin1String("link"), false},
    {QLatin1String("list.bullet.rectangle"), QLatin1String("list-bullets"), false},
    {QLatin1String("lock.shield.fill"), QLatin1String("lock-key-fill"), false},
    {QLatin1String("macwindow"), QLatin1String("app-window"), false},
    {QLatin1String("magnifyingglass"), QLatin1String("magnifying-glass"), false},
    {QLatin1String("moon.zzz.fill"), QLatin1String("moon-stars-fill"), false},
    {QLatin1String("network"), QLatin1String("network-bold"), false},
    {QLatin1String("plus"), QLatin1String("plus-bold"), false},
    {QLatin1String("plus.circle.fill"), QLatin1String("plus-circle-fill"), false},
    {QLatin1String("power"), QLatin1String("power-bold"), false},
    {QLatin1String("printer.dotmatrix"), QLatin1String("printer"), false},
    {QLatin1String("printer.fill"), QLatin1String("printer-fill"), false},
    {QLatin1String("qrcode"), QLatin1String("qr-code"), false},
    {QLatin1String("safari"), QLatin1String("compass-fill"), false},
    {QLatin1String("scissors"), QLatin1String("scissors"), false},
    {QLatin1String("scroll"), QLatin1String("scroll"), false},
    {QLatin1String("server.rack"), QLatin1String("hard-drives"), false},
    {QLatin1String("slider.horizontal.3"), QLatin1String("sliders-horizontal"), false},
    {QLatin1String("sparkles"), QLatin1String("sparkle-fill"), false},
    {QLatin1String("square.and.arrow.up"), QLatin1String("export"), false},
    {QLatin1String("stethoscope"), QLatin1String("stethoscope-fill"), false},
    {QLatin1String("tag"), QLatin1String("tag"), false},
    {QLatin1String("terminal"), QLatin1String("terminal-window"), false},
    {QLatin1String("textformat"), QLatin1String("text-aa"), false},
    {QLatin1String("trash"), QLatin1String("trash"), false},
    {QLatin1String("tray"), QLatin1String("tray"), false},
    {QLatin1String("wand.and.stars"), QLatin1String("magic-wand-fill"), false},
    {QLatin1String("wave.3.right"), QLatin1String("bluetooth"), false},
    {QLatin1String("wifi"), QLatin1String("wifi-high-bold"), false},
    {QLatin1String("wrench.and.screwdriver"), QLatin1String("wrench"), false},
    {QLatin1String("xmark"), QLatin1String("x-bold"), false},
    {QLatin1String("xmark.circle.fill"), QLatin1String("x-circle-fill"), false},
    {QLatin1String("xmark.octagon.fill"), QLatin1String("warning-octagon-fill"), false},
}};

} // namespace

std::span<const IconEntry> iconTable()
{
    return table;
}

const IconEntry *findIcon(QStringView symbol)
{
    const auto found = std::ranges::find_if(table, [symbol](const IconEntry &icon) { return icon.symbol == symbol; });
    return found == table.end() ? nullptr : &*found;
}

} // namespace zemrak
