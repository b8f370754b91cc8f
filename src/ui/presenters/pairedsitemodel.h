#pragma once

#include "base/rowmodel.h"
#include "model/pairedsite.h"

#include <optional>

namespace zemrak {

/// The pairings themselves, also of origins that are allowed no longer, in the service's order.
class PairedSiteModel : public RowModel<PairedSite>
{
    Q_OBJECT

public:
    enum Role
    {
        IdRole = Qt::UserRole,
        NameRole,
        OriginRole,
        StatusTextRole,
    };

    /// `now`: milliseconds since 1970-01-01 UTC.
    explicit PairedSiteModel(qint64 now, QObject *parent = nullptr);

    void setNow(qint64 now);
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const PairedSite &site, int role) const override;

private:
    qint64 m_now;
};

/// The pairing says when it was made.
[[nodiscard]] bool hasPairingTime(const PairedSite &site);
/// Since when a site is paired, or that it is not yet.
[[nodiscard]] QString pairingText(const std::optional<PairedSite> &pairing, qint64 now);

} // namespace zemrak
