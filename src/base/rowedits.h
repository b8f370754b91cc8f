#pragma once

#include <QList>
#include <QStringList>

namespace zemrak {

/// One step on the way from one list to another.
struct RowEdit
{
    enum class Kind
    {
        Remove, ///< `count` rows from `row` on
        Insert, ///< `count` rows at `row`; they are the rows of the new list that stand there
        Move ///< the row at `row`, so that it then stands at `to`
    };
    Kind kind = Kind::Insert;
    int row = 0;
    int count = 1;
    int to = 0;

    bool operator==(const RowEdit &) const = default;
};

/// The steps, each on the outcome of the one before, that turn rows of the ids `before` into rows of the ids `after`.
/// Rows in both lists are never removed. An id that stands twice stands for two rows, told apart by their order.
[[nodiscard]] QList<RowEdit> rowEdits(const QStringList &before, const QStringList &after);

} // namespace zemrak
