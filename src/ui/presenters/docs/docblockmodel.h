#pragma once

#include "base/rowmodel.h"
#include "guide/docblock.h"

namespace zemrak {

/// A block of the guide in its tab.
struct DocBlockRow
{
    QString id; ///< of the tab, with the block's place in it
    DocBlock block;

    bool operator==(const DocBlockRow &) const = default;
};

/// The blocks of one tab, as they are shown.
class DocBlockModel : public RowModel<DocBlockRow>
{
    Q_OBJECT

public:
    enum Role
    {
        KindRole = Qt::UserRole, ///< "heading", "text", "note", "code" or "table"
        TextRole, ///< of a heading, text or note
        LangRole,
        CodeRole,
        RowsRole, ///< a table's, the header first; lists of cells
        SharesRole, ///< what each column of a table has of its width; 1 in all
        MonoFirstRole,
    };

    using RowModel::RowModel;

    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const DocBlockRow &row, int role) const override;
};

} // namespace zemrak
