#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <variant>

namespace zemrak {

struct DocHeading
{
    QString text;
    bool operator==(const DocHeading &) const = default;
};

/// A paragraph; it may have several lines.
struct DocText
{
    QString text;
    bool operator==(const DocText &) const = default;
};

struct DocNote
{
    QString text;
    bool operator==(const DocNote &) const = default;
};

struct DocCode
{
    QString lang; ///< label of the language, as Markdown has it
    QString code; ///< without a line end after the last line
    bool operator==(const DocCode &) const = default;
};

struct DocTable
{
    QList<QStringList> rows; ///< the first one is the header

    /// The first column holds endpoints, codes or names, and is shown in a monospaced font.
    [[nodiscard]] bool monoFirst() const;
    bool operator==(const DocTable &) const = default;
};

/// A piece of the guide, of one of five kinds.
using DocBlock = std::variant<DocHeading, DocText, DocNote, DocCode, DocTable>;

} // namespace zemrak
