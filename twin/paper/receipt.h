#pragma once

#include "twin/paper/dots.h"

#include <QJsonObject>
#include <QRect>

namespace zemrak::paper {

/// Something that the printer did: "text", "image", "symbol", "cut", "pulse" or "buzzer".
struct Printed
{
    QString kind;
    QRect place; ///< dots from the paper's top left corner; of no size for what leaves no ink
    QJsonObject facts; ///< what there is to say about it, by kind

    [[nodiscard]] QJsonObject toJson() const;
};

/// Bytes that were not understood, or asked for what the printer cannot do.
struct Problem
{
    qint64 offset = 0; ///< of the first of them, from the receipt's first byte
    QByteArray bytes; ///< the first few of them
    QString what; ///< in English

    [[nodiscard]] QJsonObject toJson() const;
};

/// A piece of paper, from one cut to the next.
struct Receipt
{
    Dots paper;
    QList<Printed> printed;
    QList<Problem> problems;
    QByteArray bytes; ///< that it was printed from, up to limits::receiptBytes
    qint64 size = 0; ///< of all its bytes
    qint64 omitted = 0; ///< events and problems beyond what is listed
    bool cut = false; ///< by the printer; else the connection ended

    /// Without the picture and the bytes.
    [[nodiscard]] QJsonObject toJson() const;
};

/// Bounds of what one receipt may take; what goes beyond them is counted and said, and not kept.
namespace limits {
inline constexpr int rows = 65'536; ///< 8 m of paper
inline constexpr qsizetype receiptBytes = 16 << 20;
inline constexpr qsizetype events = 20'000;
inline constexpr qsizetype problems = 200;
inline constexpr qsizetype commandBytes = 4 << 20; ///< of one command with its parameters
inline constexpr int maximumDots = 4096; ///< width of the paper
inline constexpr int minimumDots = 64;
} // namespace limits

} // namespace zemrak::paper
