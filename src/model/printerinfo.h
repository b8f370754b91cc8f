#pragma once

#include "model/profile.h"

#include <QJsonValue>
#include <QString>

#include <optional>

namespace zemrak {

/// One printer. Only what names it and tells its state must be right; an odd reason, protocol or profile costs that
/// field and not the whole state.
struct PrinterInfo
{
    QString id;
    QString name;
    QString type;
    QString state;
    std::optional<QString> reason; ///< why it is offline
    std::optional<QString> protocolName;
    std::optional<Profile> profile;

    [[nodiscard]] static std::optional<PrinterInfo> decode(const QJsonValue &value);
    bool operator==(const PrinterInfo &) const = default;
};

} // namespace zemrak
