#pragma once

#include <QJsonValue>
#include <QString>

#include <optional>

namespace zemrak {

/// A printer's settings. Decoding never fails: a field that is missing or of the wrong type is left at its default.
struct Profile
{
    std::optional<QString> protocolName;
    std::optional<qint64> dots; ///< print width in dots per line
    std::optional<QString> cut;
    std::optional<QString> dither;
    std::optional<QString> alias;
    std::optional<QString> role;
    QString drawerPin; ///< "2" when the service says nothing usable
    std::optional<QString> codepageEncoding;
    std::optional<qint64> codepageEscT; ///< page number for the printer's ESC t command

    /// None only when `value` is no JSON object at all.
    [[nodiscard]] static std::optional<Profile> decode(const QJsonValue &value);
    bool operator==(const Profile &) const = default;
};

} // namespace zemrak
