#pragma once

#include "base/rowmodel.h"
#include "model/pairedsite.h"

#include <optional>

namespace zemrak {

/// An origin that may print, with its pairing where it has one.
struct OriginRow
{
    QString id; ///< the origin
    bool isDefault = false; ///< built into the service, cannot be removed
    std::optional<PairedSite> pairing;

    bool operator==(const OriginRow &) const = default;
};

/// `allowed` in its order, each with the first of `pairings` for it.
[[nodiscard]] QList<OriginRow> originRows(
    const QList<QString> &allowed, const QList<QString> &defaults, const QList<PairedSite> &pairings);

/// The origins that may print, as the page of sites shows them.
class OriginListModel : public RowModel<OriginRow>
{
    Q_OBJECT

public:
    enum Role
    {
        OriginRole = Qt::UserRole,
        DefaultRole,
        TagRole, ///< of an origin the person added; else empty
        RemovableRole,
        PairedRole, ///< it can be unpaired
        SiteIdRole, ///< of its pairing; empty: none
        SiteNameRole,
        StatusTextRole,
        StatusColorRole, ///< palette name
    };

    /// `now`: milliseconds since 1970-01-01 UTC.
    explicit OriginListModel(qint64 now, QObject *parent = nullptr);

    void setNow(qint64 now);
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] QVariant value(const OriginRow &row, int role) const override;

private:
    qint64 m_now;
};

} // namespace zemrak
