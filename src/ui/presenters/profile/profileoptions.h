#pragma once

#include <QList>
#include <QString>
#include <QVariant>

namespace zemrak {

/// One choice of a printer setting.
struct ProfileOption
{
    QVariant value; ///< as it is sent to the service; for the width a number, else a text
    QString label;
};

// The choices of each setting, in the order shown.
[[nodiscard]] const QList<ProfileOption> &protocolOptions();
[[nodiscard]] const QList<ProfileOption> &dotsOptions();
[[nodiscard]] const QList<ProfileOption> &ditherOptions();
[[nodiscard]] const QList<ProfileOption> &cutOptions();
[[nodiscard]] const QList<ProfileOption> &pinOptions();
[[nodiscard]] const QList<ProfileOption> &encodingOptions();
[[nodiscard]] const QList<ProfileOption> &roleOptions();

/// The label of `value`; a value that is no choice is its own label.
[[nodiscard]] QString labelOf(const QList<ProfileOption> &options, const QVariant &value);

/// The choices as a list of {value, label} objects for a drop-down chooser. A `current` value that is none of them is
/// added at the end, so that what a printer is set to can be seen and kept.
[[nodiscard]] QVariantList chooserOptions(const QList<ProfileOption> &options, const QVariant &current);

} // namespace zemrak
