#pragma once

#include "base/rowmodel.h"
#include "model/scanresult.h"

namespace zemrak {

/// What the last connection check found out, a row a printer.
class ScanResultModel : public RowModel<ScanPrinter>
{
    Q_OBJECT

public:
    enum Role
    {
        NameRole = Qt::UserRole,
        AnsweredRole,
        IconRole, ///< symbol name
        ColorRole, ///< palette name
        ReasonRole, ///< why it did not answer; empty when it did
    };

    using RowModel::RowModel;

    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const ScanPrinter &printer, int role) const override;
};

} // namespace zemrak
