#pragma once

#include <QJsonValue>
#include <QString>

#include <optional>

namespace zemrak {

/// A web origin that was paired with the service.
struct PairedSite
{
    QString id;
    QString origin;
    QString name;
    double createdAt = 0; ///< time stamp, as the service sends it

    [[nodiscard]] static std::optional<PairedSite> decode(const QJsonValue &value);
    bool operator==(const PairedSite &) const = default;
};

} // namespace zemrak
