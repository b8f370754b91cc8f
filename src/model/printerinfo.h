#pragma once

#include "model/profile.h"

#include <QJsonValue>
#include <QString>

#include <optional>

namespace zemrak {

/// One printer. Only what names it and tells its state must be right; an odd value of any other
/// key costs that field and not the whole state.
struct PrinterInfo
{
    QString id;
    QString name;
    QString type;
    QString state;
    std::optional<QString> reason; ///< why it is offline
    std::optional<QString> problem; ///< what keeps one in state "error" from printing
    std::optional<QString> paper; ///< "ok", "low", "out"; none: not told
    std::optional<QString> cover; ///< "closed", "open"; none: not told
    std::optional<QString> protocolName;
    std::optional<Profile> profile;

    [[nodiscard]] static std::optional<PrinterInfo> decode(const QJsonValue &value);
    bool operator==(const PrinterInfo &) const = default;
};

} // namespace zemrak
