#pragma once

#include "base/rowmodel.h"
#include "model/alertitem.h"

namespace zemrak {

/// A list of alerts for views, keyed by id.
class AlertModel : public RowModel<AlertItem>
{
    Q_OBJECT

public:
    enum Role
    {
        IdRole = Qt::UserRole,
        KeyRole,
        SeverityRole,
        TitleRole,
        MessageRole,
        ActionRole, ///< empty: none
        CreatedAtRole, ///< milliseconds since 1970-01-01 UTC, as the next two
        LastAtRole,
        ResolvedAtRole, ///< invalid while the problem lasts
        CountRole,
        ReadRole,
    };

    using RowModel::RowModel;

    void setAlerts(const QList<AlertItem> &alerts) { setRows(alerts); }
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const AlertItem &alert, int role) const override;
};

} // namespace zemrak
