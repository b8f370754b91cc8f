#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <variant>

namespace zemrak {

struct DocHeading
{
    QString text;
};

/// A paragraph; it may have several lines.
struct DocText
{
    QString text;
};

struct DocNote
{
    QString text;
};

struct DocCode
{
    QString lang; ///< label of the language, as Markdown has it
    QString code; ///< without a line end after the last line
};

struct DocTable
{
    QList<QStringList> rows; ///< the first one is the header

    /// The first column holds endpoints, codes or names, and is shown in a monospaced font.
    [[nodiscard]] bool monoFirst() const;
};

/// A piece of the guide, of one of five kinds.
using DocBlock = std::variant<DocHeading, DocText, DocNote, DocCode, DocTable>;

} // namespace zemrak
