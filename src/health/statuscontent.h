#pragma once

#include "health/healthsummary.h"

#include <QList>
#include <QString>

namespace zemrak {

/// What the status item can ask of the application.
enum class StatusCommand
{
    ShowWindow,
    Scan, ///< show the window, then run the connection check
    ToggleLogin,
    OpenLoginSettings,
    Restart, ///< the service, not the application
    Quit
};

struct StatusMenuEntry
{
    enum class Kind
    {
        Header, ///< disabled, carries the verdict's colour
        Line, ///< disabled
        Command,
        Separator
    };
    Kind kind = Kind::Separator;
    QString text;
    StatusCommand command = StatusCommand::ShowWindow; ///< of a Command only
    bool checkable = false;
    bool checked = false;

    bool operator==(const StatusMenuEntry &) const = default;
};

/// All that the status item says, apart from its icon.
struct StatusContent
{
    bool problem = false; ///< the dot on the icon, and red in place of green
    QString tooltip; ///< several lines of plain text
    QList<StatusMenuEntry> menu; ///< from top to bottom

    bool operator==(const StatusContent &) const = default;
};

[[nodiscard]] StatusContent statusContent(const HealthSummary &health, bool launchAtLogin, bool loginNeedsApproval);

} // namespace zemrak
