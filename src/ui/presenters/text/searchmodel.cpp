#include "ui/presenters/text/searchmodel.h"

#include "ui/presenters/text/searchtext.h"

namespace zemrak {

SearchModel::SearchModel(CountedListModel &list, QList<int> roles, QObject *parent)
    : QSortFilterProxyModel(parent)
    , m_roles(std::move(roles))
{
    list.reinsertMovedRows();
    setSourceModel(&list);
    connect(this, &QAbstractItemModel::rowsInserted, this, &SearchModel::countChanged);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &SearchModel::countChanged);
    connect(&list, &QAbstractItemModel::rowsInserted, this, &SearchModel::totalChanged);
    connect(&list, &QAbstractItemModel::rowsRemoved, this, &SearchModel::totalChanged);
}

void SearchModel::setSearch(const QString &search)
{
    if (m_search == search)
        return;
    m_search = search;
    const QStringList words = searchWords(search);
    if (words != m_words) {
        m_words = words;
        invalidateFilter();
    }
    Q_EMIT searchChanged();
    Q_EMIT totalChanged(); // what hangs on it hangs on the search, too
}

bool SearchModel::filterAcceptsRow(int row, const QModelIndex &parent) const
{
    if (m_words.isEmpty())
        return true;
    const QModelIndex index = sourceModel()->index(row, 0, parent);
    QStringList texts;
    for (const int role : m_roles)
        texts.append(index.data(role).toString());
    return matches(m_words, texts);
}

} // namespace zemrak
