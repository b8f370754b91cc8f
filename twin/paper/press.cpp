#include "twin/paper/press.h"

#include "twin/paper/glyphs.h"

#include <QJsonArray>

#include <algorithm>

namespace zemrak::paper {

namespace {

constexpr qsizetype itemsOfLine = 512; // more than letters of 9 dots on the widest paper
constexpr qsizetype shownBytes = 16;

QJsonObject factsOf(const Style &style)
{
    QJsonObject facts{{QStringLiteral("font"), style.fontB ? QStringLiteral("B") : QStringLiteral("A")},
        {QStringLiteral("size"), QJsonArray{style.across, style.down}}};
    const auto flag = [&facts](const char *name, bool on) {
        if (on)
            facts.insert(QLatin1String(name), true);
    };
    flag("bold", style.bold);
    flag("underline", style.underline > 0);
    flag("overline", style.overline);
    flag("reverse", style.reverse);
    flag("turned", style.turned);
    return facts;
}

/// A letter as it is printed: enlarged, with its lines, reversed, and with the space to its right.
Dots dressed(Dots cell, const Style &style)
{
    if (style.bold) { // printed twice, a dot apart
        const Dots once = cell;
        cell.stamp(once, 1, 0);
    }
    if (style.turned)
        cell = cell.turned();
    Dots wide(cell.width() + style.spacing, cell.height());
    wide.stamp(cell, 0, 0);
    Dots letter = wide.scaled(style.across, style.down);
    const QRect all(0, 0, letter.width(), letter.height());
    if (style.underline > 0 && !style.reverse && !style.turned)
        letter.fill({0, all.height() - style.underline, all.width(), style.underline});
    if (style.overline && !style.reverse && !style.turned)
        letter.fill({0, 0, all.width(), 1});
    if (style.reverse)
        letter.invert(all);
    return letter;
}

} // namespace

Press::Press(int width)
    : m_areaWidth(std::clamp(width, limits::minimumDots, limits::maximumDots))
{
    m_receipt.paper = Dots(m_areaWidth, 1);
}

void Press::initialise()
{
    style = {};
    edge = Edge::Left;
    lineSpacing = standardSpacing;
    upsideDown = false;
    m_items.clear();
    m_tabs.clear();
    m_pen = 0;
    setArea(0, 0);
}

void Press::setArea(int left, int areaWidth)
{
    m_left = std::clamp(left, 0, width() - 1);
    m_areaWidth = std::clamp(areaWidth == 0 ? width() : areaWidth, 1, width() - m_left);
}

bool Press::letter(char32_t character)
{
    const Glyphs &font = style.fontB ? Glyphs::fontB() : Glyphs::fontA();
    letter(character, font.cell(character));
    return font.has(character);
}

void Press::letter(char32_t character, Dots cell)
{
    Dots dots = dressed(std::move(cell), style);
    if (m_pen > 0 && m_pen + dots.width() - style.spacing * style.across > m_areaWidth)
        lineFeed();
    const int advanceBy = dots.width();
    if (m_items.size() < itemsOfLine)
        m_items.append({std::move(dots), m_pen, character, style, {}});
    m_pen += advanceBy;
}

void Press::inlinePicture(const Dots &picture, const QString &command)
{
    if (m_items.size() < itemsOfLine)
        m_items.append({picture, m_pen, 0, style, command});
    m_pen += picture.width();
}

bool Press::picture(const Dots &picture, Printed event)
{
    if (!m_items.isEmpty())
        lineFeed();
    const int left = m_left + m_pen + shift(m_pen + picture.width());
    const bool fits = left + picture.width() <= m_left + m_areaWidth;
    event.place = QRect(left, m_row, picture.width(), picture.height());
    drawOn(upsideDown ? picture.upsideDown() : picture, left);
    advance(picture.height());
    list(std::move(event));
    m_pen = 0;
    return fits;
}

void Press::moveTo(int x)
{
    m_pen = std::clamp(x, 0, m_areaWidth);
}

void Press::tab()
{
    const Glyphs &font = style.fontB ? Glyphs::fontB() : Glyphs::fontA();
    const int column = (font.width() + style.spacing) * style.across;
    if (m_tabs.isEmpty()) {
        moveTo((m_pen / (8 * column) + 1) * 8 * column);
        return;
    }
    for (const int stop : std::as_const(m_tabs)) {
        if (stop * column > m_pen) {
            moveTo(stop * column);
            return;
        }
    }
}

int Press::shift(int width) const
{
    const int room = std::max(0, m_areaWidth - width);
    return edge == Edge::Left ? 0 : edge == Edge::Center ? room / 2 : room;
}

void Press::drawOn(const Dots &picture, int left)
{
    const int bottom = std::min(m_row + picture.height(), limits::rows);
    m_receipt.paper.extend(bottom);
    m_receipt.paper.stamp(picture, left, m_row);
}

int Press::printLine()
{
    if (m_items.isEmpty())
        return 0;
    int height = 0;
    int end = 0;
    for (const Item &item : std::as_const(m_items)) {
        height = std::max(height, item.dots.height());
        end = std::max(end, item.x + item.dots.width());
    }
    Dots line(std::min(end, m_areaWidth), height);
    for (const Item &item : std::as_const(m_items))
        line.stamp(item.dots, item.x, height - item.dots.height());
    const int left = m_left + (upsideDown ? m_areaWidth - line.width() - shift(line.width()) : shift(line.width()));
    drawOn(upsideDown ? line.upsideDown() : line, left);
    listLine(m_row, height, left);
    m_items.clear();
    return height;
}

void Press::listLine(int top, int height, int left)
{
    QString text;
    QJsonArray runs;
    int begin = -1;
    int end = left;
    for (qsizetype first = 0; first < m_items.size();) {
        const Item &item = m_items.at(first);
        if (item.character == 0) {
            list({QStringLiteral("image"),
                {left + item.x, top + height - item.dots.height(), item.dots.width(), item.dots.height()},
                {{QStringLiteral("command"), item.command}}});
            ++first;
            continue;
        }
        QString run;
        const qsizetype from = first;
        while (first < m_items.size() && m_items.at(first).character != 0 && m_items.at(first).style == item.style)
            run += QString::fromUcs4(&m_items.at(first++).character, 1);
        end = std::max(end, left + m_items.at(first - 1).x + m_items.at(first - 1).dots.width());
        if (begin < 0)
            begin = left + m_items.at(from).x;
        QJsonObject facts = factsOf(m_items.at(from).style);
        facts.insert(QStringLiteral("text"), run);
        facts.insert(QStringLiteral("x"), left + m_items.at(from).x);
        runs.append(facts);
        text += run;
    }
    if (runs.isEmpty())
        return;
    QJsonObject facts{{QStringLiteral("text"), text}, {QStringLiteral("runs"), runs}};
    if (upsideDown)
        facts.insert(QStringLiteral("upsideDown"), true);
    list({QStringLiteral("text"), {begin, top, std::max(1, end - begin), height}, facts});
}

void Press::lineFeed()
{
    advance(std::max(printLine(), lineSpacing));
    m_pen = 0;
}

void Press::feed(int rows)
{
    const int height = printLine();
    advance(rows < 0 ? rows : std::max(height, rows));
    m_pen = 0;
}

void Press::advance(int rows)
{
    m_row = std::clamp(m_row + rows, 0, limits::rows);
    if (m_row == limits::rows && m_receipt.problems.size() < limits::problems
        && (m_receipt.problems.isEmpty() || m_receipt.problems.last().bytes != "paper"))
        problem(m_receipt.size, "paper", QStringLiteral("the paper is too long: what follows is not drawn"));
}

void Press::note(const QString &kind, const QJsonObject &facts)
{
    list({kind, QRect(0, m_row, 0, 0), facts});
}

/// A tall picture comes in bands or rows, each a command of its own; together they are one picture.
bool Press::continues(const Printed &event) const
{
    if (event.kind != QLatin1String("image") || m_receipt.printed.isEmpty())
        return false;
    const Printed &last = m_receipt.printed.last();
    return last.kind == event.kind && last.facts == event.facts && last.place.left() == event.place.left()
        && last.place.right() == event.place.right() && last.place.bottom() + 1 == event.place.top();
}

void Press::list(Printed event)
{
    if (continues(event)) {
        m_receipt.printed.last().place.setBottom(event.place.bottom());
        return;
    }
    if (m_receipt.printed.size() < limits::events)
        m_receipt.printed.append(std::move(event));
    else
        ++m_receipt.omitted;
}

void Press::problem(qint64 offset, QByteArrayView bytes, const QString &what)
{
    if (m_receipt.problems.size() < limits::problems)
        m_receipt.problems.append({offset, bytes.first(std::min(bytes.size(), shownBytes)).toByteArray(), what});
    else
        ++m_receipt.omitted;
}

void Press::count(QByteArrayView bytes)
{
    m_receipt.size += bytes.size();
    m_receipt.bytes.append(bytes.first(std::min(bytes.size(), limits::receiptBytes - m_receipt.bytes.size())));
}

Receipt Press::take(bool cut)
{
    Receipt done = std::exchange(m_receipt, Receipt());
    m_receipt.paper = Dots(done.paper.width(), 1);
    done.paper.extend(m_row);
    if (m_row == 0)
        done.paper = Dots();
    done.cut = cut;
    m_row = 0;
    m_pen = 0;
    return done;
}

} // namespace zemrak::paper
