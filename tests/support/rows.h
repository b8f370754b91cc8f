#pragma once

#include <QStringList>

namespace zemrak::test {

/// The rows of a table that is written as text: one a line, its cells between "|" and without the blanks around them.
[[nodiscard]] inline QList<QStringList> rowsOf(const char *table)
{
    QList<QStringList> rows;
    for (const QString &line : QString::fromUtf8(table).split(u'\n')) {
        if (line.trimmed().isEmpty())
            continue;
        QStringList cells = line.split(u'|');
        for (QString &cell : cells)
            cell = cell.trimmed();
        rows.append(cells);
    }
    return rows;
}

} // namespace zemrak::test
