#pragma once

#include <QString>
#include <QStringList>

namespace zemrak {

/// What this launch is for.
struct LaunchMode
{
    enum class Kind
    {
        Interactive,
        RenderMenubar, ///< operand: folder for the pictures
        NotificationCheck,
        ExportDocs, ///< operand: file to write
        LoginItem, ///< operand: the value after the equals sign, "on", "off" or anything else
        Help,
        Version,
        Status, ///< in words
        StatusJson,
        Unknown, ///< operand: the first option that means nothing here
    };
    Kind kind = Kind::Interactive;
    QString operand;

    bool operator==(const LaunchMode &) const = default;
};

/// Exit status of a launch with an option that means nothing, as in sysexits.h.
inline constexpr int usageStatus = 64;

/// The first mode that matches, in the order of the list above, wherever its flag stands among `arguments` (without
/// the program's name). A flag that wants an operand and is the last argument is ignored, and so are words that are no
/// options. Options of the toolkit, such as "-platform xcb", belong to it.
[[nodiscard]] LaunchMode launchMode(const QStringList &arguments);

/// What "--help" prints, in English.
[[nodiscard]] QString helpText();

} // namespace zemrak
