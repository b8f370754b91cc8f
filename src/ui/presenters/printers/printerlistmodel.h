#pragma once

#include "base/rowmodel.h"
#include "model/printerinfo.h"

namespace zemrak {

/// The printers as the page of printers shows them, in the service's order.
class PrinterListModel : public RowModel<PrinterInfo>
{
    Q_OBJECT

public:
    enum Role
    {
        IdRole = Qt::UserRole,
        NameRole, ///< the alias, or the device's name; may be empty
        DeviceNameRole,
        TypeRole, ///< the service's code
        TypeTextRole,
        IconRole, ///< symbol name
        DetailRole, ///< why it is offline, else how it is connected
        TroubleRole, ///< what is wrong with one that is connected, and what to do; empty: nothing is known to be
        TroubleColorRole, ///< palette name
        LanguageRole, ///< printing language; empty: not shown
        StateRole, ///< the service's code
        StateTextRole,
        StateColorRole, ///< palette name
        ConnectedRole,
        OfflineRole, ///< the card is dimmed
        RoleTextRole, ///< what the printer is for; empty: not set
    };

    using RowModel::RowModel;

    /// The printer of this id; null when there is none.
    [[nodiscard]] const PrinterInfo *printer(const QString &id) const;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const PrinterInfo &printer, int role) const override;
};

/// Symbol for a printer of this type.
[[nodiscard]] QString printerIcon(const QString &type);
/// What is wrong with a printer that is connected: why it is in error, or that its roll ends soon; else empty.
[[nodiscard]] QString troubleText(const PrinterInfo &printer);
/// The printing language in words; empty for none.
[[nodiscard]] QString languageLabel(const std::optional<QString> &protocolName);

} // namespace zemrak
