#pragma once

#include "base/rowmodel.h"
#include "model/discovery.h"

namespace zemrak {

/// A hit of a search for printers, ready to be added.
struct FoundPrinter
{
    enum class Adding
    {
        NotYet, ///< or in vain
        UnderWay,
        Done,
    };

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
    Adding adding = Adding::NotYet; ///< since the search

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
        AddingRole, ///< under way
        AddedRole,
    };

    using RowModel::RowModel;

    /// The hits of a new search. One that is being added still is.
    void show(QList<FoundPrinter> hits);
    /// Does nothing when there is no such hit any more.
    void mark(const QString &id, FoundPrinter::Adding adding);
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const FoundPrinter &hit, int role) const override;
};

} // namespace zemrak
