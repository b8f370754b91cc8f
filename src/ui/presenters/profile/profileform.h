#pragma once

#include "model/profile.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace zemrak {

/// A printer's settings as the person edits them; a new one holds the defaults.
struct ProfileForm
{
    QString proto = QStringLiteral("auto");
    qint64 dots = 0; ///< print width in dots per line; 0: automatic
    QString cut = QStringLiteral("partial");
    QString pin = QStringLiteral("2");
    QString dither = QStringLiteral("threshold");
    QString role = QStringLiteral("receipt");
    QString alias; ///< as typed
    QString enc; ///< character encoding; empty: none
    QString escT; ///< code-page number, as typed

    /// What the service holds; defaults where it holds nothing.
    [[nodiscard]] static ProfileForm of(const std::optional<Profile> &profile);
    /// What a save sends: every setting, with a null for what is automatic or empty, so that the service clears it.
    [[nodiscard]] QJsonObject fields() const;

    bool operator==(const ProfileForm &) const = default;
};

} // namespace zemrak
