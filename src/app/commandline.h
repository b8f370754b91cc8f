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
    };
    Kind kind = Kind::Interactive;
    QString operand;

    bool operator==(const LaunchMode &) const = default;
};

/// The first mode that matches, in the order of the list above, wherever its flag stands among `arguments` (without
/// the program's name). A flag that wants an operand and is the last argument is ignored, and so is everything else:
/// whatever asks for no mode starts the application, so that no desktop's extra argument keeps it from starting.
[[nodiscard]] LaunchMode launchMode(const QStringList &arguments);

/// What "--help" prints, in English.
[[nodiscard]] QString helpText();

} // namespace zemrak
