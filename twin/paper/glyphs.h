#pragma once

#include "twin/paper/dots.h"

#include <QHash>

namespace zemrak::paper {

/// A cell font of the printer's own: letters of one width, stored dot by dot.
class Glyphs
{
public:
    /// @param path a PC Screen Font of version 2 with its table of Unicode characters
    explicit Glyphs(const QString &path);
    /// 12 by 24 dots.
    static const Glyphs &fontA();
    /// 9 by 17 dots.
    static const Glyphs &fontB();

    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] bool has(char32_t character) const { return m_places.contains(character); }
    /// One cell; of a character that the font does not have, an outline of the cell.
    [[nodiscard]] Dots cell(char32_t character) const;

private:
    QByteArray m_file;
    QHash<char32_t, int> m_places; ///< of a character's bits in the file
    int m_width = 0;
    int m_height = 0;
    int m_bytes = 0; ///< of one cell
};

} // namespace zemrak::paper
