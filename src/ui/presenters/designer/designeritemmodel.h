#pragma once

#include "base/rowmodel.h"
#include "designer/designeritem.h"

namespace zemrak {

/// One line of the receipt as the form knows it.
struct DesignerItemRow
{
    QString id;
    QString name;
    QString qty;
    QString price;

    bool operator==(const DesignerItemRow &) const = default;
};

/// The lines of the receipt being designed. An edit touches its own row only, so that the others' fields stay as they
/// are.
class DesignerItemModel : public RowModel<DesignerItemRow>
{
    Q_OBJECT

public:
    enum Role
    {
        IdRole = Qt::UserRole,
        NameRole,
        QtyRole,
        PriceRole,
    };

    using RowModel::RowModel;

    void show(const QList<DesignerItem> &items);
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const DesignerItemRow &row, int role) const override;
};

} // namespace zemrak
