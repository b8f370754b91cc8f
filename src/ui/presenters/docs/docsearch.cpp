#include "ui/presenters/docs/docsearch.h"

#include "ui/presenters/text/searchtext.h"

#include <QStringList>

#include <algorithm>

namespace zemrak {

namespace {

// Words that an excerpt shows before the one that was searched for, and characters it has at most.
constexpr qsizetype wordsBefore = 6;
constexpr qsizetype longest = 160;

/// What a block can be found by: each of its parts by itself, each part with one or more lines.
struct Parts
{
    QStringList operator()(const DocHeading &block) const { return {block.text}; }
    QStringList operator()(const DocText &block) const { return {block.text}; }
    QStringList operator()(const DocNote &block) const { return {block.text}; }
    QStringList operator()(const DocCode &block) const { return {block.code}; }
    QStringList operator()(const DocTable &block) const
    {
        QStringList rows;
        for (const QStringList &row : block.rows.mid(1))
            rows += row.join(QStringLiteral(" — "));
        return rows;
    }
};

// The line with most of the words, from a little before the first of them.
QString excerpt(const QString &part, const QStringList &words)
{
    const auto score = [&words](const QString &line) {
        const QString folded = searchText(line);
        return std::ranges::count_if(words, [&folded](const QString &word) { return folded.contains(word); });
    };
    const QStringList lines = part.split(QLatin1Char('\n'));
    const QString line = std::ranges::max_element(lines, {}, score)->simplified();
    const QStringList shown = line.split(QLatin1Char(' '));
    const auto first = std::ranges::find_if(shown, [&score](const QString &word) { return score(word) > 0; });
    const qsizetype at = first == shown.end() ? 0 : first - shown.begin();
    if (line.size() <= longest || at <= wordsBefore)
        return line.size() <= longest ? line : line.first(longest).trimmed() + u'…';
    const QString rest = shown.mid(at - wordsBefore).join(QLatin1Char(' '));
    return u'…' + (rest.size() <= longest ? rest : rest.first(longest).trimmed() + u'…');
}

} // namespace

QList<DocHit> searchDocs(const QList<DocTab> &tabs, const QString &search)
{
    const QStringList words = searchWords(search);
    QList<DocHit> hits;
    if (words.isEmpty())
        return hits;
    for (const DocTab &tab : tabs) {
        const auto add = [&](qsizetype block, qsizetype part, const QString &shown) {
            const QString id = QStringLiteral("%1:%2:%3").arg(tab.id).arg(block).arg(part);
            hits.append({id, tab.id, int(block), tab.title, tab.icon, shown});
        };
        if (matches(words, {tab.title}))
            add(0, -1, {});
        for (qsizetype block = 0; block < tab.blocks.size(); ++block) {
            const QStringList parts = std::visit(Parts(), tab.blocks.at(block));
            for (qsizetype part = 0; part < parts.size(); ++part) {
                if (matches(words, {parts.at(part)}))
                    add(block, part, excerpt(parts.at(part), words));
            }
        }
    }
    return hits;
}

} // namespace zemrak
