#pragma once

#include "model/printerinfo.h"

#include <QString>

#include <optional>

namespace zemrak {

/// A named colour of the palette; each has a light and a dark value there.
enum class Tone
{
    Green,
    Red,
    Amber,
    Muted
};

struct Label
{
    QString text; ///< Arabic
    Tone tone = Tone::Muted;

    bool operator==(const Label &) const = default;
};

// The service's codes in words. Codes are compared exactly, case and all; an unknown one gets the stated default.
[[nodiscard]] Label stateInfo(const QString &printerState);
[[nodiscard]] Label jobLabel(const QString &jobStatus);
/// Why a printer is offline.
[[nodiscard]] QString reasonLabel(const std::optional<QString> &reason);
/// What keeps a printer from printing, or a job waiting, and what to do about it, in a sentence or two. An unknown code
/// is named, so that support can be told.
[[nodiscard]] QString hindranceText(const QString &code);
/// How a printer is connected.
[[nodiscard]] QString typeLabel(const QString &printerType);

/// The printer can be reached; one in "error" counts, as it answers.
[[nodiscard]] bool isConnected(const PrinterInfo &printer);
/// The alias where the profile has one, even an empty one; else the device's name.
[[nodiscard]] QString displayName(const PrinterInfo &printer);

} // namespace zemrak
