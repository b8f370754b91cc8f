#include "ui/presenters/designer/designeritemmodel.h"

namespace zemrak {

void DesignerItemModel::show(const QList<DesignerItem> &items)
{
    QList<DesignerItemRow> rows;
    rows.reserve(items.size());
    for (const DesignerItem &item : items)
        rows.append({item.id.toString(QUuid::WithoutBraces), item.name, item.qty, item.price});
    setRows(rows);
}

QVariant DesignerItemModel::value(const DesignerItemRow &row, int role) const
{
    switch (role) {
    case IdRole:
        return row.id;
    case Qt::DisplayRole:
    case NameRole:
        return row.name;
    case QtyRole:
        return row.qty;
    case PriceRole:
        return row.price;
    default:
        return {};
    }
}

QHash<int, QByteArray> DesignerItemModel::roleNames() const
{
    return {{IdRole, "itemId"}, {NameRole, "name"}, {QtyRole, "qty"}, {PriceRole, "price"}};
}

} // namespace zemrak
