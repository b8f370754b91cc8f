#pragma once

#include "base/rowmodel.h"
#include "model/discovery.h"

namespace zemrak {

/// A hit of a search for printers, ready to be added.
struct FoundPrinter
{
    QString id; ///< what tells it from other hits of the same search
    QString title;
    QString detail; ///< second line; may be empty
    QString note; ///< shown in place of a button; empty: it can be added
    QString buttonTitle;
    // What adding it sends.
    QString name;
    QString host; ///< of a network printer
    qint64 port = 0;
    QString transport;
    QString uri; ///< of a USB printer
    bool added = false; ///< the person has added it since the search

    bool operator==(const FoundPrinter &) const = default;
};

[[nodiscard]] FoundPrinter found(const NetHost &host);
[[nodiscard]] FoundPrinter found(const BonjourService &service);
[[nodiscard]] FoundPrinter found(const UsbDevice &device);

/// The hits of the last search of one kind.
class FoundPrinterModel : public RowModel<FoundPrinter>
{
    Q_OBJECT

public:
    enum Role
    {
        TitleRole = Qt::UserRole,
        DetailRole,
        NoteRole,
        ButtonRole,
        AddableRole,
        AddedRole,
    };

    using RowModel::RowModel;

    void markAdded(int row);
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const FoundPrinter &hit, int role) const override;
};

} // namespace zemrak
