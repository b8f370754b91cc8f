#pragma once

#include "base/rowmodel.h"

#include <QList>
#include <QSortFilterProxyModel>
#include <QString>
#include <QStringList>

namespace zemrak {

/// The rows of a list that match what the person searches for, in the list's order.
class SearchModel : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY searchChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(int total READ total NOTIFY totalChanged)
    Q_PROPERTY(bool searchOffered READ isSearchOffered NOTIFY totalChanged)
    Q_PROPERTY(bool searching READ isSearching NOTIFY totalChanged)

public:
    /// Lists of up to this many rows can be looked over without a search field.
    static constexpr int overlooked = 10;

    /// Searches in the texts of `roles` of `list`, which outlives this object and tells of no moves any more.
    SearchModel(CountedListModel &list, QList<int> roles, QObject *parent = nullptr);

    [[nodiscard]] QString search() const { return m_search; }
    void setSearch(const QString &search);
    /// Rows that match.
    [[nodiscard]] int count() const { return rowCount(); }
    /// Rows there are.
    [[nodiscard]] int total() const { return sourceModel()->rowCount(); }
    /// The list is long enough for a search field, or is being searched.
    [[nodiscard]] bool isSearchOffered() const { return total() > overlooked || !m_search.isEmpty(); }
    /// There is something to search for, and something to search in.
    [[nodiscard]] bool isSearching() const { return !m_search.isEmpty() && total() > 0; }

Q_SIGNALS:
    void searchChanged();
    void countChanged();
    void totalChanged();

protected:
    [[nodiscard]] bool filterAcceptsRow(int row, const QModelIndex &parent) const override;

private:
    QList<int> m_roles;
    QString m_search;
    QStringList m_words;
};

} // namespace zemrak
