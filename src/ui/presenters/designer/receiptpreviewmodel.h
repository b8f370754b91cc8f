#pragma once

#include "base/rowmodel.h"
#include "designer/designerdoc.h"

#include <QSize>

namespace zemrak {

/// One line of the paper that the designer shows, from the reading edge on.
struct PreviewLine
{
    QString id;
    QString kind; ///< "text", "rule", "symbol"
    QString label; ///< before the text, with its colon where it has one
    QString text; ///< as typed or counted
    QString amount; ///< at the other edge; empty: none
    bool centred = false;
    bool strong = false; ///< bold
    bool large = false; ///< of twice the size
    QString symbol; ///< of a "symbol" its name
    QSize dots; ///< and its size, in dots of the printer

    bool operator==(const PreviewLine &) const = default;
};

/// The lines of a receipt, where the print service puts them.
/// @param stamp date and time, as they are printed
[[nodiscard]] QList<PreviewLine> previewLines(const DesignerDoc &doc, const QString &stamp);

/// The paper line by line: an edit touches only the lines that read differently for it.
class ReceiptPreviewModel : public RowModel<PreviewLine>
{
    Q_OBJECT

public:
    enum Role
    {
        KindRole = Qt::UserRole,
        LabelRole,
        TextRole,
        AmountRole,
        CentredRole,
        StrongRole,
        LargeRole,
        SymbolRole,
        DotsRole,
    };

    using RowModel::RowModel;

    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const PreviewLine &line, int role) const override;
};

} // namespace zemrak
