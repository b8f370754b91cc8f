#include "twin/paper/escpos.h"

#include "twin/paper/glyphs.h"

#include <algorithm>

namespace zemrak::paper {

namespace {

constexpr int dotsPerInch = 203;
constexpr int largest = 8; // times a letter can be enlarged

} // namespace

int EscPos::dotsAcross(int units) const
{
    return m_unitX == 0 ? units : units * dotsPerInch / m_unitX;
}

int EscPos::dotsDown(int units) const
{
    return m_unitY == 0 ? units : units * dotsPerInch / m_unitY;
}

void EscPos::lineFeed(Bytes)
{
    press().lineFeed();
}

void EscPos::tab(Bytes)
{
    press().tab();
}

void EscPos::notDrawn(Bytes)
{
    problem(QStringLiteral("this printer does not have this command"));
}

void EscPos::reset(Bytes)
{
    initialise();
    ask(Request::Initialise);
}

void EscPos::printMode(Bytes parameters)
{
    const int mode = byteAt(parameters, 0);
    Style &style = press().style;
    style.fontB = (mode & 0x01) != 0;
    style.bold = (mode & 0x08) != 0;
    style.down = (mode & 0x10) != 0 ? 2 : 1;
    style.across = (mode & 0x20) != 0 ? 2 : 1;
    style.underline = (mode & 0x80) != 0 ? 1 : 0;
}

void EscPos::size(Bytes parameters)
{
    const int size = byteAt(parameters, 0);
    const int across = (size >> 4) + 1;
    const int down = (size & 0x0f) + 1;
    if (across > largest || down > largest) {
        problem(QStringLiteral("letters are enlarged 8 times at most"));
        return;
    }
    press().style.across = across;
    press().style.down = down;
}

void EscPos::bold(Bytes parameters)
{
    press().style.bold = (byteAt(parameters, 0) & 1) != 0;
}

void EscPos::underline(Bytes parameters)
{
    const int dots = digitAt(parameters, 0);
    if (dots > 2)
        problem(QStringLiteral("a line of 0 to 2 dots can be drawn under letters"));
    else
        press().style.underline = dots;
}

void EscPos::reverse(Bytes parameters)
{
    press().style.reverse = (byteAt(parameters, 0) & 1) != 0;
}

void EscPos::turn(Bytes parameters)
{
    const int mode = digitAt(parameters, 0);
    if (mode > 2)
        problem(QStringLiteral("letters are turned by 0 or 90 degrees"));
    else
        press().style.turned = mode != 0;
}

void EscPos::upsideDown(Bytes parameters)
{
    const bool wanted = (byteAt(parameters, 0) & 1) != 0;
    if (press().atLineStart())
        press().upsideDown = wanted;
    else if (press().upsideDown != wanted)
        problem(QStringLiteral("only works at the start of a line"));
}

void EscPos::font(Bytes parameters)
{
    const int font = digitAt(parameters, 0);
    press().style.fontB = font == 1;
    if (font > 1)
        problem(QStringLiteral("this printer has the fonts A and B"));
}

void EscPos::letterSpacing(Bytes parameters)
{
    press().style.spacing = dotsAcross(byteAt(parameters, 0));
}

void EscPos::lineSpacing(Bytes parameters)
{
    press().lineSpacing = dotsDown(byteAt(parameters, 0));
}

void EscPos::standardSpacing(Bytes)
{
    press().lineSpacing = Press::standardSpacing;
}

void EscPos::align(Bytes parameters)
{
    const int edge = digitAt(parameters, 0);
    if (edge > 2)
        problem(QStringLiteral("unknown alignment"));
    else if (press().atLineStart())
        press().edge = static_cast<Edge>(edge);
    else if (press().edge != static_cast<Edge>(edge))
        problem(QStringLiteral("only works at the start of a line"));
}

void EscPos::leftMargin(Bytes parameters)
{
    if (press().atLineStart())
        press().setArea(dotsAcross(wordAt(parameters, 0)), press().areaWidth());
    else
        problem(QStringLiteral("only works at the start of a line"));
}

void EscPos::area(Bytes parameters)
{
    if (press().atLineStart())
        press().setArea(press().left(), std::max(1, dotsAcross(wordAt(parameters, 0))));
    else
        problem(QStringLiteral("only works at the start of a line"));
}

void EscPos::units(Bytes parameters)
{
    m_unitX = byteAt(parameters, 0);
    m_unitY = byteAt(parameters, 1);
}

void EscPos::absolutePosition(Bytes parameters)
{
    press().moveTo(dotsAcross(wordAt(parameters, 0)));
}

void EscPos::relativePosition(Bytes parameters)
{
    const int units = wordAt(parameters, 0);
    press().moveTo(press().pen() + dotsAcross(units >= 0x8000 ? units - 0x10000 : units));
}

void EscPos::tabStops(Bytes parameters)
{
    QList<int> columns;
    for (const char column : parameters)
        if (column != '\0')
            columns.append(static_cast<uchar>(column));
    press().setTabs(columns);
}

void EscPos::feedDots(Bytes parameters)
{
    press().feed(dotsDown(byteAt(parameters, 0)));
}

void EscPos::feedLines(Bytes parameters)
{
    press().feed(byteAt(parameters, 0) * press().lineSpacing);
}

void EscPos::feedBackDots(Bytes parameters)
{
    press().feed(-dotsDown(byteAt(parameters, 0)));
}

void EscPos::feedBackLines(Bytes parameters)
{
    press().feed(-byteAt(parameters, 0) * press().lineSpacing);
}

void EscPos::codePage(Bytes parameters)
{
    const int number = byteAt(parameters, 0);
    selectPage(CodePage::ofEscPos(number), number);
}

void EscPos::country(Bytes parameters)
{
    selectCountry(byteAt(parameters, 0));
}

void EscPos::defineLetters(Bytes parameters)
{
    const int stride = byteAt(parameters, 0);
    qsizetype place = 3;
    const Glyphs &font = press().style.fontB ? Glyphs::fontB() : Glyphs::fontA();
    for (int letter = byteAt(parameters, 1); letter <= byteAt(parameters, 2) && place < parameters.size(); ++letter) {
        const int columns = byteAt(parameters, place);
        Dots cell(font.width(), font.height());
        cell.stamp(Dots::fromColumns(parameters.sliced(place + 1), stride, columns), 0, 0);
        if (columns > 0)
            m_letters.insert(static_cast<uchar>(letter), cell);
        place += 1 + columns * stride;
    }
}

void EscPos::useOwnLetters(Bytes parameters)
{
    m_useLetters = (byteAt(parameters, 0) & 1) != 0;
}

void EscPos::forgetLetter(Bytes parameters)
{
    m_letters.remove(static_cast<uchar>(byteAt(parameters, 0)));
}

Dots EscPos::ownLetter(uchar byte) const
{
    return m_useLetters ? m_letters.value(byte) : Dots();
}

} // namespace zemrak::paper
