#pragma once

#include <QString>
#include <QUuid>

namespace zemrak {

/// One line of a receipt, as typed.
struct DesignerItem
{
    QUuid id = QUuid::createUuid(); ///< tells rows apart in lists; never sent
    QString name;
    QString qty;
    QString price;

    /// What "add a product" appends: no name, one of it, no price yet.
    [[nodiscard]] static DesignerItem blank() { return {.qty = QStringLiteral("1")}; }
    bool operator==(const DesignerItem &) const = default;
};

} // namespace zemrak
