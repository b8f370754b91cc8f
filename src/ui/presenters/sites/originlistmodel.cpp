#include "ui/presenters/sites/originlistmodel.h"

#include "ui/presenters/text/palettename.h"
#include "ui/presenters/text/relativetime.h"

#include <QSet>

#include <utility>

namespace zemrak {

namespace {

bool hasPairingTime(const PairedSite &site)
{
    return site.createdAt > 0;
}

QString pairingText(const std::optional<PairedSite> &pairing, qint64 now)
{
    return pairing && hasPairingTime(*pairing) ? QStringLiteral("مقترن منذ ") + relativeAge(pairing->createdAt, now)
                                               : QStringLiteral("بانتظار أول طباعة");
}

} // namespace

QList<OriginRow> originRows(
    const QList<QString> &allowed, const QList<QString> &defaults, const QList<PairedSite> &pairings)
{
    const QSet<QString> builtIn(defaults.cbegin(), defaults.cend());
    QHash<QString, qsizetype> pairingOf;
    for (qsizetype i = pairings.size() - 1; i >= 0; --i)
        pairingOf.insert(pairings[i].origin, i);

    QList<OriginRow> rows;
    rows.reserve(allowed.size());
    for (const QString &origin : allowed) {
        OriginRow row{.id = origin, .isDefault = builtIn.contains(origin)};
        if (const auto found = pairingOf.constFind(origin); found != pairingOf.cend())
            row.pairing = pairings[*found];
        rows.append(row);
    }
    return rows;
}

OriginListModel::OriginListModel(qint64 now, QObject *parent)
    : RowModel(parent)
    , m_now(now)
{
}

void OriginListModel::setNow(qint64 now)
{
    const qint64 before = std::exchange(m_now, now);
    touch({StatusTextRole}, [before, now](const OriginRow &row) {
        return row.pairing && relativeStep(row.pairing->createdAt, before) != relativeStep(row.pairing->createdAt, now);
    });
}

QVariant OriginListModel::value(const OriginRow &row, int role) const
{
    switch (role) {
    case Qt::DisplayRole:
    case OriginRole:
        return row.id;
    case DefaultRole:
        return row.isDefault;
    case TagRole:
        return row.isDefault ? QString() : QStringLiteral("أُضيف يدويًا");
    case RemovableRole:
        return !row.isDefault;
    case PairedRole:
        return row.pairing.has_value();
    case SiteIdRole:
        return row.pairing ? row.pairing->id : QString();
    case SiteNameRole:
        return row.pairing ? row.pairing->name : QString();
    case StatusTextRole:
        return pairingText(row.pairing, m_now);
    case StatusColorRole:
        return row.pairing && hasPairingTime(*row.pairing) ? paletteName(Tone::Muted) : paletteName(Tone::Amber);
    default:
        return {};
    }
}

QHash<int, QByteArray> OriginListModel::roleNames() const
{
    return {{OriginRole, "origin"}, {DefaultRole, "isDefault"}, {TagRole, "tag"}, {RemovableRole, "removable"},
        {PairedRole, "paired"}, {SiteIdRole, "siteId"}, {SiteNameRole, "siteName"}, {StatusTextRole, "statusText"},
        {StatusColorRole, "statusColor"}};
}

} // namespace zemrak
