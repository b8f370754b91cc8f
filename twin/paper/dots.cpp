#include "twin/paper/dots.h"

#include <QRect>

#include <algorithm>
#include <cstring>

namespace zemrak::paper {

namespace {

uchar maskOf(int x)
{
    return static_cast<uchar>(0x80 >> (x & 7));
}

} // namespace

Dots::Dots(int width, int height)
    : m_width(width > 0 && height > 0 ? width : 0)
    , m_height(m_width > 0 ? height : 0)
    , m_stride((m_width + 7) / 8)
    , m_bits(static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(m_height))
{
}

Dots Dots::fromRows(QByteArrayView bytes, int stride, int height)
{
    Dots dots(8 * stride, height);
    const qsizetype size = std::min<qsizetype>(bytes.size(), static_cast<qsizetype>(dots.m_bits.size()));
    if (size > 0)
        std::memcpy(dots.m_bits.data(), bytes.data(), static_cast<std::size_t>(size));
    return dots;
}

Dots Dots::fromColumns(QByteArrayView bytes, int stride, int width)
{
    Dots dots(width, 8 * stride);
    for (qsizetype i = 0; i < bytes.size() && i < qsizetype{stride} * width; ++i) {
        const auto byte = static_cast<uchar>(bytes.at(i));
        for (int bit = 0; byte != 0 && bit < 8; ++bit)
            if ((byte & maskOf(bit)) != 0)
                dots.set(static_cast<int>(i / stride), static_cast<int>(i % stride) * 8 + bit);
    }
    return dots;
}

bool Dots::at(int x, int y) const
{
    if (x < 0 || y < 0 || x >= m_width || y >= m_height)
        return false;
    return (m_bits[static_cast<std::size_t>(y) * m_stride + x / 8] & maskOf(x)) != 0;
}

void Dots::set(int x, int y)
{
    if (x < 0 || y < 0 || x >= m_width || y >= m_height)
        return;
    m_bits[static_cast<std::size_t>(y) * m_stride + x / 8] |= maskOf(x);
}

template <typename Function> void Dots::eachIn(const QRect &area, Function change)
{
    const QRect inside = area & QRect(0, 0, m_width, m_height);
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            change(m_bits[static_cast<std::size_t>(y) * m_stride + x / 8], maskOf(x));
}

void Dots::fill(const QRect &area)
{
    eachIn(area, [](uchar &byte, uchar mask) { byte |= mask; });
}

void Dots::invert(const QRect &area)
{
    eachIn(area, [](uchar &byte, uchar mask) { byte ^= mask; });
}

Dots Dots::scaled(int across, int down) const
{
    if (across == 1 && down == 1)
        return *this;
    Dots large(m_width * across, m_height * down);
    for (int y = 0; y < large.m_height; ++y) {
        for (int x = 0; x < large.m_width && y % down == 0; ++x)
            if (at(x / across, y / down))
                large.set(x, y);
        if (y % down != 0)
            std::memcpy(&large.m_bits[static_cast<std::size_t>(y) * large.m_stride],
                &large.m_bits[static_cast<std::size_t>(y - 1) * large.m_stride],
                static_cast<std::size_t>(large.m_stride));
    }
    return large;
}

Dots Dots::turned() const
{
    Dots result(m_height, m_width);
    for (int y = 0; y < m_height; ++y)
        for (int x = 0; x < m_width; ++x)
            if (at(x, y))
                result.set(m_height - 1 - y, x);
    return result;
}

Dots Dots::upsideDown() const
{
    Dots result(m_width, m_height);
    for (int y = 0; y < m_height; ++y)
        for (int x = 0; x < m_width; ++x)
            if (at(x, y))
                result.set(m_width - 1 - x, m_height - 1 - y);
    return result;
}

void Dots::stamp(const Dots &other, int left, int top)
{
    const int firstRow = std::max(0, -top);
    const int lastRow = std::min(other.m_height, m_height - top);
    const bool byBytes = left >= 0 && left % 8 == 0;
    // Whole bytes while all of their dots lie on this picture.
    const int bytes = byBytes ? std::clamp((m_width - left) / 8, 0, other.m_width / 8) : 0;
    for (int y = firstRow; y < lastRow; ++y) {
        for (int i = 0; i < bytes; ++i)
            m_bits[static_cast<std::size_t>(y + top) * m_stride + left / 8 + i]
                |= other.m_bits[static_cast<std::size_t>(y) * other.m_stride + i];
        for (int x = 8 * bytes; x < other.m_width; ++x)
            if (other.at(x, y))
                set(left + x, top + y);
    }
}

void Dots::extend(int height)
{
    if (height <= m_height || m_width == 0)
        return;
    m_height = height;
    m_bits.resize(static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height));
}

QImage Dots::toImage() const
{
    QImage image(m_width, m_height, QImage::Format_Mono);
    if (image.isNull())
        return image;
    image.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
    image.fill(0);
    for (int y = 0; y < m_height; ++y)
        std::memcpy(
            image.scanLine(y), &m_bits[static_cast<std::size_t>(y) * m_stride], static_cast<std::size_t>(m_stride));
    return image;
}

} // namespace zemrak::paper
