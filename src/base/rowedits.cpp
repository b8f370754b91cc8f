#include "base/rowedits.h"

#include <QHash>

#include <algorithm>
#include <vector>

namespace zemrak {

namespace {

constexpr int gone = -1;

// For each row of `before` its place in `after`. Equal ids are handed out in their order.
std::vector<int> placesIn(const QStringList &after, const QStringList &before)
{
    QHash<QString, QList<int>> free;
    free.reserve(after.size());
    for (qsizetype i = after.size() - 1; i >= 0; --i)
        free[after[i]].append(int(i));
    std::vector<int> places;
    places.reserve(size_t(before.size()));
    for (const QString &id : before) {
        const auto found = free.find(id);
        places.push_back(found == free.end() || found->isEmpty() ? gone : found->takeLast());
    }
    return places;
}

void removeGone(std::vector<int> &rows, QList<RowEdit> &edits)
{
    for (int end = int(rows.size()); end > 0;) {
        if (rows[size_t(end) - 1] != gone) {
            --end;
            continue;
        }
        int first = end - 1;
        while (first > 0 && rows[size_t(first) - 1] == gone)
            --first;
        edits.append({.kind = RowEdit::Kind::Remove, .row = first, .count = end - first});
        rows.erase(rows.begin() + first, rows.begin() + end);
        end = first;
    }
}

void move(std::vector<int> &rows, int from, int to, QList<RowEdit> &edits)
{
    edits.append({.kind = RowEdit::Kind::Move, .row = from, .to = to});
    const auto at = rows.begin();
    if (from < to)
        std::rotate(at + from, at + from + 1, at + to + 1);
    else
        std::rotate(at + to, at + from, at + from + 1);
}

} // namespace

QList<RowEdit> rowEdits(const QStringList &before, const QStringList &after)
{
    QList<RowEdit> edits;
    std::vector<int> rows = placesIn(after, before);
    removeGone(rows, edits);
    std::vector<bool> held(size_t(after.size()));
    for (const int place : rows)
        held[size_t(place)] = true;

    const int size = int(after.size());
    for (int row = 0; row < size; ++row) {
        const auto here = rows.begin() + row;
        if (here != rows.end() && *here == row)
            continue;
        if (!held[size_t(row)]) {
            int end = row + 1;
            while (end < size && !held[size_t(end)])
                ++end;
            edits.append({.kind = RowEdit::Kind::Insert, .row = row, .count = end - row});
            for (int inserted = row; inserted < end; ++inserted)
                rows.insert(rows.begin() + inserted, inserted);
            row = end - 1;
        } else if (here + 1 != rows.end() && *(here + 1) == row) {
            // Moving this one row down takes one move; moving each row that follows up past it would take many.
            const auto past = std::find_if(here + 1, rows.end(), [moved = *here](int place) { return place > moved; });
            move(rows, row, int(past - rows.begin()) - 1, edits);
        } else {
            move(rows, int(std::find(here, rows.end(), row) - rows.begin()), row, edits);
        }
    }
    return edits;
}

} // namespace zemrak
