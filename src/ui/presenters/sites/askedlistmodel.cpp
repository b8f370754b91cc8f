#include "ui/presenters/sites/askedlistmodel.h"

#include "ui/presenters/text/relativetime.h"

#include <algorithm>
#include <utility>

namespace zemrak {

AskedListModel::AskedListModel(qint64 now, QObject *parent)
    : RowModel(parent)
    , m_now(now)
{
}

void AskedListModel::show(const QList<AskedOrigin> &asked)
{
    QList<AskedRow> shown;
    for (const AskedOrigin &site : asked) {
        if (std::ranges::find(shown, site.origin, &AskedRow::id) != shown.end())
            continue;
        const auto before = std::ranges::find(rows(), site.origin, &AskedRow::id);
        AskedRow row = before == rows().end() ? AskedRow{.id = site.origin} : *before;
        row.askedAt = site.askedAt;
        shown.append(row);
    }
    setRows(shown);
}

void AskedListModel::setNow(qint64 now)
{
    const qint64 before = std::exchange(m_now, now);
    touch({TimeTextRole}, [before, now](const AskedRow &row) {
        return relativeStep(row.askedAt, before) != relativeStep(row.askedAt, now);
    });
}

bool AskedListModel::beginAllowing(const QString &origin)
{
    QList<AskedRow> marked = rows();
    const auto row = std::ranges::find(marked, origin, &AskedRow::id);
    if (row == marked.end() || row->allowing)
        return false;
    row->allowing = true;
    row->problem.clear();
    setRows(marked);
    return true;
}

void AskedListModel::endAllowing(const QString &origin, const QString &problem)
{
    QList<AskedRow> marked = rows();
    const auto row = std::ranges::find(marked, origin, &AskedRow::id);
    if (row == marked.end())
        return;
    row->allowing = false;
    row->problem = problem;
    if (problem.isEmpty())
        marked.erase(row); // ahead of the next state, which no longer holds it
    setRows(marked);
}

QVariant AskedListModel::value(const AskedRow &row, int role) const
{
    switch (role) {
    case Qt::DisplayRole:
    case OriginRole:
        return row.id;
    case TimeTextRole:
        return QStringLiteral("طلب الطباعة ") + relativeTime(row.askedAt, m_now, Digits::Western);
    case AllowingRole:
        return row.allowing;
    case ProblemRole:
        return row.problem;
    default:
        return {};
    }
}

QHash<int, QByteArray> AskedListModel::roleNames() const
{
    return {{OriginRole, "origin"}, {TimeTextRole, "timeText"}, {AllowingRole, "allowing"}, {ProblemRole, "problem"}};
}

} // namespace zemrak
