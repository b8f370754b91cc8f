#include "ui/presenters/pairedsitemodel.h"

#include "ui/presenters/relativetime.h"

#include <utility>

namespace zemrak {

bool hasPairingTime(const PairedSite &site)
{
    return site.createdAt > 0;
}

QString pairingText(const std::optional<PairedSite> &pairing, qint64 now)
{
    return pairing && hasPairingTime(*pairing) ? QStringLiteral("مقترن منذ ") + relativeAge(pairing->createdAt, now)
                                               : QStringLiteral("بانتظار أول طباعة");
}

PairedSiteModel::PairedSiteModel(qint64 now, QObject *parent)
    : RowModel(parent)
    , m_now(now)
{
}

void PairedSiteModel::setNow(qint64 now)
{
    const qint64 before = std::exchange(m_now, now);
    touch({StatusTextRole}, [before, now](const PairedSite &site) {
        return relativeStep(site.createdAt, before) != relativeStep(site.createdAt, now);
    });
}

QVariant PairedSiteModel::value(const PairedSite &site, int role) const
{
    switch (role) {
    case IdRole:
        return site.id;
    case Qt::DisplayRole:
    case NameRole:
        return site.name;
    case OriginRole:
        return site.origin;
    case StatusTextRole:
        return pairingText(site, m_now);
    default:
        return {};
    }
}

QHash<int, QByteArray> PairedSiteModel::roleNames() const
{
    return {{IdRole, "siteId"}, {NameRole, "name"}, {OriginRole, "origin"}, {StatusTextRole, "statusText"}};
}

} // namespace zemrak
