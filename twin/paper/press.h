#pragma once

#include "twin/paper/receipt.h"

#include <QList>

namespace zemrak::paper {

/// How letters look; sizes in times of the font's cell.
struct Style
{
    bool fontB = false;
    int across = 1; ///< 1 to 8
    int down = 1; ///< 1 to 8
    bool bold = false;
    int underline = 0; ///< dots, 0 to 2
    bool overline = false;
    bool reverse = false; ///< white on black
    bool turned = false; ///< each letter by 90 degrees, clockwise
    int spacing = 0; ///< dots to the right of a letter, before it is enlarged

    bool operator==(const Style &) const = default;
};

enum class Edge
{
    Left,
    Center,
    Right
};

/// Puts letters and pictures on lines and lines on the paper, dot by dot. All lengths are dots.
class Press
{
public:
    static constexpr int standardSpacing = 30; ///< 3.75 mm

    explicit Press(int width);
    /// Back to what holds at power on. What is printed stays; a line that has not been printed is lost.
    void initialise();

    Style style;
    Edge edge = Edge::Left;
    int lineSpacing = standardSpacing;
    bool upsideDown = false;

    [[nodiscard]] int width() const { return m_receipt.paper.width(); }
    [[nodiscard]] int areaWidth() const { return m_areaWidth; }
    [[nodiscard]] bool atLineStart() const { return m_items.isEmpty() && m_pen == 0; }
    /// Takes effect at the start of a line; both are cut to the paper. An area of 0 reaches to its right edge.
    void setArea(int left, int areaWidth);
    [[nodiscard]] int left() const { return m_left; }

    /// @returns false when the font has no such letter and a box stands for it
    bool letter(char32_t character);
    /// A letter of the till's own; `character` is what it is listed as.
    void letter(char32_t character, Dots cell);
    /// In the line, as tall as it is, its lower edge on the letters' lower edge.
    void inlinePicture(const Dots &picture, const QString &command);
    /// By itself, below the line; the paper moves on by its height. @returns false when it was too wide and was cut
    bool picture(const Dots &picture, Printed event);
    void moveTo(int x);
    [[nodiscard]] int pen() const { return m_pen; }
    void tab();
    void setTabs(const QList<int> &columns) { m_tabs = columns; }

    /// Prints the line and moves on by the line's height, at least by the line spacing.
    void lineFeed();
    /// Prints the line, if there is any, then moves on by `rows` altogether; less than none moves back.
    void feed(int rows);
    /// Without paper of its own.
    void note(const QString &kind, const QJsonObject &facts);
    void problem(qint64 offset, QByteArrayView bytes, const QString &what);
    void count(QByteArrayView bytes);

    [[nodiscard]] const Receipt &receipt() const { return m_receipt; }
    [[nodiscard]] int row() const { return m_row; }
    /// Ends the piece of paper; the next one begins empty. Styles stay.
    [[nodiscard]] Receipt take(bool cut);

private:
    struct Item
    {
        Dots dots;
        int x = 0;
        char32_t character = 0; ///< 0 for a picture
        Style style;
        QString command;
    };

    [[nodiscard]] int shift(int width) const;
    [[nodiscard]] int printLine();
    void drawOn(const Dots &picture, int left);
    void advance(int rows);
    [[nodiscard]] bool continues(const Printed &event) const;
    void list(Printed event);
    void listLine(int top, int height, int left);

    Receipt m_receipt;
    QList<Item> m_items;
    QList<int> m_tabs; ///< columns of letters; empty = every eighth
    int m_left = 0;
    int m_areaWidth = 0;
    int m_pen = 0;
    int m_row = 0;
};

} // namespace zemrak::paper
