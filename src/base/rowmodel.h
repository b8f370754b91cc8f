#pragma once

#include "base/rowedits.h"

#include <QAbstractListModel>
#include <QList>

namespace zemrak {

/// A list model that tells views how many rows it has. Main thread only, as all that follows.
class CountedListModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    explicit CountedListModel(QObject *parent = nullptr)
        : QAbstractListModel(parent)
    {
        connect(this, &QAbstractItemModel::rowsInserted, this, &CountedListModel::countChanged);
        connect(this, &QAbstractItemModel::rowsRemoved, this, &CountedListModel::countChanged);
    }
    [[nodiscard]] int count() const { return rowCount(QModelIndex()); }

    /// From now on a row that moves is told of as one that goes and one that comes. For a list behind a filter: Qt's
    /// own pass a move on as a change of everything, which sends a view back to its first row.
    void reinsertMovedRows() { m_reinserts = true; }

Q_SIGNALS:
    void countChanged();

protected:
    [[nodiscard]] bool reinsertsMovedRows() const { return m_reinserts; }

private:
    bool m_reinserts = false;
};

/// A list of records keyed by their `id`. setRows() touches just the rows, and of a changed row just the roles, that
/// differ, so that scroll position, focus and selection survive a poll, and one that brings the same list touches none.
template <typename Row> class RowModel : public CountedListModel
{
public:
    using CountedListModel::CountedListModel;

    [[nodiscard]] const QList<Row> &rows() const { return m_rows; }
    void setRows(const QList<Row> &rows);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_rows.size());
    }
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override
    {
        return checkIndex(index, CheckIndexOption::IndexIsValid) ? value(m_rows.at(index.row()), role) : QVariant();
    }

protected:
    /// What `role` of `row` holds; invalid for an unknown role.
    [[nodiscard]] virtual QVariant value(const Row &row, int role) const = 0;

    /// Tells views that `roles` of the rows for which `stale(row)` holds read differently now.
    template <typename Stale> void touch(const QList<int> &roles, Stale stale);

private:
    void apply(const RowEdit &edit, const QList<Row> &rows);
    void replace(int row, const Row &by);

    QList<Row> m_rows;
};

template <typename Row> void RowModel<Row>::setRows(const QList<Row> &rows)
{
    if (m_rows == rows)
        return;
    const auto ids = [](const QList<Row> &of) {
        QStringList list;
        list.reserve(of.size());
        for (const Row &row : of)
            list.append(row.id);
        return list;
    };
    const QList<RowEdit> edits = rowEdits(ids(m_rows), ids(rows));
    for (const RowEdit &edit : edits)
        apply(edit, rows);
    for (int row = 0; row < int(rows.size()); ++row) {
        if (m_rows.at(row) != rows.at(row))
            replace(row, rows.at(row));
    }
}

template <typename Row> void RowModel<Row>::apply(const RowEdit &edit, const QList<Row> &rows)
{
    switch (edit.kind) {
    case RowEdit::Kind::Remove:
        beginRemoveRows({}, edit.row, edit.row + edit.count - 1);
        m_rows.remove(edit.row, edit.count);
        endRemoveRows();
        break;
    case RowEdit::Kind::Insert:
        beginInsertRows({}, edit.row, edit.row + edit.count - 1);
        m_rows = m_rows.mid(0, edit.row) + rows.mid(edit.row, edit.count) + m_rows.mid(edit.row);
        endInsertRows();
        break;
    case RowEdit::Kind::Move:
        if (reinsertsMovedRows()) {
            beginRemoveRows({}, edit.row, edit.row);
            const Row row = m_rows.takeAt(edit.row);
            endRemoveRows();
            beginInsertRows({}, edit.to, edit.to);
            m_rows.insert(edit.to, row);
            endInsertRows();
            break;
        }
        beginMoveRows({}, edit.row, edit.row, {}, edit.to > edit.row ? edit.to + 1 : edit.to);
        m_rows.insert(edit.to, m_rows.takeAt(edit.row));
        endMoveRows();
        break;
    }
}

template <typename Row> void RowModel<Row>::replace(int row, const Row &by)
{
    QList<int> changed;
    const QList<int> roles = roleNames().keys();
    for (const int role : roles) {
        if (value(m_rows.at(row), role) != value(by, role))
            changed.append(role);
    }
    m_rows[row] = by;
    if (!changed.isEmpty())
        Q_EMIT dataChanged(index(row), index(row), changed);
}

template <typename Row> template <typename Stale> void RowModel<Row>::touch(const QList<int> &roles, Stale stale)
{
    const int size = int(m_rows.size());
    for (int row = 0; row < size; ++row) {
        const int first = row;
        while (row < size && stale(m_rows.at(row)))
            ++row;
        if (row > first)
            Q_EMIT dataChanged(index(first), index(row - 1), roles);
    }
}

} // namespace zemrak
