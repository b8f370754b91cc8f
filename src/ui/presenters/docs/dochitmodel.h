#pragma once

#include "base/rowmodel.h"
#include "ui/presenters/docs/docsearch.h"

namespace zemrak {

/// What a search of the guide has found.
class DocHitModel : public RowModel<DocHit>
{
    Q_OBJECT

public:
    enum Role
    {
        TabTitleRole = Qt::UserRole,
        TabIconRole,
        ExcerptRole, ///< may be empty: the tab's title is what was found
    };

    using RowModel::RowModel;

    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const DocHit &hit, int role) const override;
};

} // namespace zemrak
