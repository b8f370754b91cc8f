#include "twin/paper/starline.h"

#include "twin/paper/glyphs.h"

#include <algorithm>
#include <vector>

namespace zemrak::paper {

namespace {

constexpr int dotsPerMillimetre = 8;
constexpr int usualSpacing = 4 * dotsPerMillimetre; // ESC z 1
constexpr int narrow = 3 * dotsPerMillimetre;

} // namespace

StarLine::StarLine(int dots, Listener &listener)
    : PrinterLanguage(dots, listener)
{
}

std::span<const CommandReader::Command> StarLine::commands() const
{
    static const std::vector<Command> list = [] {
        std::vector<Command> all;
        for (std::size_t i = 0; i < table().size(); ++i)
            all.push_back({table()[i].prefix, table()[i].length, static_cast<int>(i)});
        return all;
    }();
    return list;
}

bool StarLine::isText(uchar byte) const
{
    return m_rasterMode ? byte != 'b' && byte != 'k' && CommandReader::isText(byte) : CommandReader::isText(byte);
}

void StarLine::run(int id, QByteArrayView parameters, qint64 offset)
{
    const Entry &entry = table()[static_cast<std::size_t>(id)];
    startCommand(entry.prefix, parameters, offset);
    m_fixed = entry.fixed;
    (this->*entry.action)(parameters);
}

void StarLine::initialise()
{
    PrinterLanguage::initialise();
    press().lineSpacing = usualSpacing;
    m_rasterMode = false;
    m_qr = {.type = SymbolType::Qr, .module = 3, .level = 1};
    m_pdf417 = {.type = SymbolType::Pdf417, .module = 2, .height = 3, .level = 1};
}

void StarLine::notDrawn(Bytes)
{
    problem(QStringLiteral("this printer does not have this command"));
}

void StarLine::lineFeed(Bytes)
{
    press().lineFeed();
}

void StarLine::formFeed(Bytes)
{
    if (!press().atLineStart())
        press().lineFeed();
}

void StarLine::tab(Bytes)
{
    press().tab();
}

void StarLine::tabStops(Bytes parameters)
{
    QList<int> columns;
    for (const char column : parameters)
        if (column != '\0')
            columns.append(static_cast<uchar>(column));
    press().setTabs(columns);
}

void StarLine::reset(Bytes)
{
    initialise();
    ask(Request::Initialise);
}

void StarLine::fixedWide(Bytes)
{
    press().style.across = m_fixed;
}

void StarLine::fixedTall(Bytes)
{
    press().style.down = m_fixed;
}

void StarLine::wide(Bytes parameters)
{
    press().style.across = std::min(6, digitAt(parameters, 0) + 1);
}

void StarLine::tall(Bytes parameters)
{
    press().style.down = std::min(6, digitAt(parameters, 0) + 1);
}

void StarLine::size(Bytes parameters)
{
    const int down = digitAt(parameters, 0);
    const int across = digitAt(parameters, 1);
    if (down > 5 || across > 5) {
        problem(QStringLiteral("letters are enlarged 6 times at most"));
        return;
    }
    press().style.down = down + 1;
    press().style.across = across + 1;
}

void StarLine::bold(Bytes)
{
    press().style.bold = m_fixed != 0;
}

void StarLine::underline(Bytes parameters)
{
    press().style.underline = digitAt(parameters, 0) != 0 ? 2 : 0;
}

void StarLine::overline(Bytes parameters)
{
    press().style.overline = digitAt(parameters, 0) != 0;
}

void StarLine::reverse(Bytes)
{
    press().style.reverse = m_fixed != 0;
}

void StarLine::upsideDown(Bytes)
{
    if (press().atLineStart())
        press().upsideDown = m_fixed != 0;
    else if (press().upsideDown != (m_fixed != 0))
        problem(QStringLiteral("only works at the start of a line"));
}

void StarLine::font(Bytes parameters)
{
    const int font = digitAt(parameters, 0);
    press().style.fontB = font == 1;
    if (font > 1)
        problem(QStringLiteral("this printer has the fonts A and B"));
}

void StarLine::fontPitch(Bytes)
{
    press().style.fontB = false;
    press().style.spacing = m_fixed - Glyphs::fontA().width();
}

void StarLine::letterSpacing(Bytes parameters)
{
    press().style.spacing = std::min(15, digitAt(parameters, 0));
}

void StarLine::lineSpacing(Bytes parameters)
{
    press().lineSpacing = digitAt(parameters, 0) == 0 ? narrow : usualSpacing;
}

void StarLine::narrowSpacing(Bytes)
{
    press().lineSpacing = narrow;
}

void StarLine::align(Bytes parameters)
{
    const int edge = digitAt(parameters, 0);
    if (edge > 2)
        problem(QStringLiteral("unknown alignment"));
    else
        press().edge = static_cast<Edge>(edge);
}

// Margins are set in letters of the font.
void StarLine::leftMargin(Bytes parameters)
{
    const int column = Glyphs::fontA().width();
    const int left = column * byteAt(parameters, 0);
    press().setArea(left, std::max(1, press().left() + press().areaWidth() - left));
}

void StarLine::rightMargin(Bytes parameters)
{
    const int column = Glyphs::fontA().width();
    press().setArea(press().left(), std::max(1, column * byteAt(parameters, 0) - press().left()));
}

void StarLine::absolutePosition(Bytes parameters)
{
    press().moveTo(wordAt(parameters, 0));
}

void StarLine::relativePosition(Bytes parameters)
{
    const int dots = wordAt(parameters, 0);
    press().moveTo(press().pen() + (dots >= 0x8000 ? dots - 0x10000 : dots));
}

void StarLine::feedLines(Bytes parameters)
{
    press().feed(byteAt(parameters, 0) * press().lineSpacing);
}

void StarLine::feedQuarters(Bytes parameters)
{
    press().feed(byteAt(parameters, 0) * dotsPerMillimetre / 4);
}

void StarLine::feedEighths(Bytes parameters)
{
    press().feed(byteAt(parameters, 0) * dotsPerMillimetre / 8);
}

void StarLine::codePage(Bytes parameters)
{
    const int number = byteAt(parameters, 0);
    selectPage(CodePage::ofStar(number), number);
}

void StarLine::country(Bytes parameters)
{
    selectCountry(digitAt(parameters, 0));
}

std::unique_ptr<PrinterLanguage> makeStarLine(int dots, Listener &listener)
{
    return std::make_unique<StarLine>(dots, listener);
}

} // namespace zemrak::paper
