#pragma once

#include <QByteArrayView>
#include <QImage>

#include <vector>

namespace zemrak::paper {

/// A picture of one bit for each dot, black = 1. Coordinates are dots from the left and from the top; what lies outside
/// is white and is not drawn.
class Dots
{
public:
    Dots() = default;
    /// All white. A width or height below 1 gives an empty picture.
    Dots(int width, int height);
    /// Rows of `stride` bytes each, the leftmost dot in the highest bit; missing bytes are white.
    static Dots fromRows(QByteArrayView bytes, int stride, int height);
    /// Columns of `stride` bytes each, the uppermost dot in the highest bit; missing bytes are white.
    static Dots fromColumns(QByteArrayView bytes, int stride, int width);

    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] bool isEmpty() const { return m_width == 0 || m_height == 0; }
    [[nodiscard]] bool at(int x, int y) const;
    void set(int x, int y);
    void fill(const QRect &area);

    /// Each dot as a block of so many; both at least 1.
    [[nodiscard]] Dots scaled(int across, int down) const;
    /// A quarter of a turn, clockwise.
    [[nodiscard]] Dots turned() const;
    [[nodiscard]] Dots upsideDown() const;
    /// Draws the black dots of another picture over this one.
    void stamp(const Dots &other, int left, int top);
    void invert(const QRect &area);
    /// Adds white rows below, up to `height` in all.
    void extend(int height);

    /// Format_Mono, white and black.
    [[nodiscard]] QImage toImage() const;

    bool operator==(const Dots &) const = default;

private:
    template <typename Function> void eachIn(const QRect &area, Function change);

    int m_width = 0;
    int m_height = 0;
    int m_stride = 0;
    std::vector<uchar> m_bits;
};

} // namespace zemrak::paper
