#pragma once

#include <QString>

#include <array>
#include <optional>

namespace zemrak::paper {

/// What the bytes 0x80 to 0xff stand for. Those below are ASCII in every page.
class CodePage
{
public:
    /// A name as in "437", "1256" or "8859-6"; none when there is no such page.
    static std::optional<CodePage> named(const QString &name);
    /// By the number that ESC t has for it.
    static std::optional<CodePage> ofEscPos(int number);
    /// By the number that ESC GS t has for it.
    static std::optional<CodePage> ofStar(int number);

    [[nodiscard]] const QString &name() const { return m_name; }
    /// 0 for a byte that the page leaves undefined.
    [[nodiscard]] char32_t character(uchar byte) const;

private:
    QString m_name;
    std::array<char32_t, 128> m_upper{};
};

} // namespace zemrak::paper
