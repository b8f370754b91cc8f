#include "ui/presenters/docs/docblockmodel.h"

#include "ui/presenters/text/mixedtext.h"

#include <algorithm>
#include <numeric>

namespace zemrak {

namespace {

// Between these many characters a column is as wide as its longest cell; beyond, it wraps.
constexpr qsizetype narrowest = 12;
constexpr qsizetype widest = 44;

QVariantList rowsOf(const DocTable &table)
{
    QVariantList rows;
    for (const QStringList &row : table.rows) {
        QStringList cells;
        std::ranges::transform(row, std::back_inserter(cells), mixedText);
        rows.append(QVariant(cells));
    }
    return rows;
}

QVariantList sharesOf(const DocTable &table)
{
    QList<qsizetype> lengths(table.rows.value(0).size(), narrowest);
    for (const QStringList &row : table.rows) {
        for (qsizetype column = 0; column < lengths.size(); ++column)
            lengths[column] = std::clamp(row.value(column).size(), lengths.at(column), widest);
    }
    const auto all = double(std::accumulate(lengths.cbegin(), lengths.cend(), qsizetype(0)));
    QVariantList shares;
    for (const qsizetype length : lengths)
        shares.append(double(length) / all);
    return shares;
}

QString textOf(const DocBlock &block)
{
    if (const auto *heading = std::get_if<DocHeading>(&block))
        return heading->text;
    if (const auto *text = std::get_if<DocText>(&block))
        return text->text;
    const auto *note = std::get_if<DocNote>(&block);
    return note ? note->text : QString();
}

QVariant kindOf(const DocBlock &block)
{
    static const QStringList kinds{QStringLiteral("heading"), QStringLiteral("text"), QStringLiteral("note"),
        QStringLiteral("code"), QStringLiteral("table")};
    return kinds.at(qsizetype(block.index()));
}

} // namespace

QHash<int, QByteArray> DocBlockModel::roleNames() const
{
    return {{KindRole, "kind"}, {TextRole, "blockText"}, {LangRole, "lang"}, {CodeRole, "code"}, {RowsRole, "rows"},
        {SharesRole, "shares"}, {MonoFirstRole, "monoFirst"}};
}

QVariant DocBlockModel::value(const DocBlockRow &row, int role) const
{
    const auto *code = std::get_if<DocCode>(&row.block);
    const auto *table = std::get_if<DocTable>(&row.block);
    switch (role) {
    case KindRole:
        return kindOf(row.block);
    case TextRole:
        return mixedText(textOf(row.block));
    case LangRole:
        return code ? code->lang : QString();
    case CodeRole:
        return code ? code->code : QString();
    case RowsRole:
        return table ? rowsOf(*table) : QVariantList();
    case SharesRole:
        return table ? sharesOf(*table) : QVariantList();
    case MonoFirstRole:
        return table && table->monoFirst();
    default:
        return {};
    }
}

} // namespace zemrak
