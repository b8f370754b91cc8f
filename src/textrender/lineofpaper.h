#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace zemrak {

/// What is to be drawn: a text across the paper, wrapped, with another one at the opposite edge if there is one.
struct LineOfPaper
{
    enum class Edge
    {
        Left,
        Center,
        Right
    };

    static constexpr int minimumWidth = 64;
    static constexpr int maximumWidth = 2048;
    static constexpr int maximumSize = 8;
    static constexpr qsizetype maximumLength = 4096; ///< of text and opposite together, in UTF-16 units

    QString text; ///< line ends begin new lines; a paragraph's direction is that of its first strong letter
    QString opposite; ///< stands on the last line of the text, or below when both do not fit; not drawn when centred
    int width = 576; ///< dots, a multiple of 8
    Edge edge = Edge::Left;
    bool bold = false;
    bool underline = false;
    bool invert = false;
    int across = 1; ///< letters this many times as wide
    int down = 1; ///< and this many times as tall

    /// Why it cannot be drawn, in English; empty when it can.
    [[nodiscard]] QString problem() const;

    /// From a JSON object with the fields "text", "opposite", "width", "align" ("left", "center", "right"), "bold",
    /// "underline", "invert" and "size" ([across, down]); only "text" and "width" must be there.
    /// @param problem set when nothing is returned
    [[nodiscard]] static std::optional<LineOfPaper> fromJson(const QByteArray &json, QString *problem);

    [[nodiscard]] static std::optional<Edge> edgeNamed(const QString &name);
};

} // namespace zemrak
