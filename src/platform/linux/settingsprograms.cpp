#include "platform/linux/settingsprograms.h"

#include <algorithm>
#include <array>

namespace zemrak::linux_ {

namespace {

using Pane = Desktop::SettingsPane;

/// Command lines one a line, best first.
struct Programs
{
    const char *desktop; ///< lower case; empty: every desktop
    Pane pane;
    const char *commands;
};

// GNOME has no page of its own for what starts with the session: its old and its extra program have one, and the page
// of applications at least names them.
constexpr std::array table = {
    Programs{"gnome", Pane::LoginItems,
        "gnome-session-properties\ngnome-tweaks\ngnome-control-center applications\ngnome-control-center"},
    Programs{"gnome", Pane::Network, "gnome-control-center network\ngnome-control-center"},
    Programs{"gnome", Pane::Notifications, "gnome-control-center notifications\ngnome-control-center"},
    Programs{"kde", Pane::LoginItems, "systemsettings kcm_autostart\nsystemsettings5 kcm_autostart"},
    Programs{"kde", Pane::Network, "systemsettings kcm_networkmanagement\nsystemsettings5 kcm_networkmanagement"},
    Programs{"kde", Pane::Notifications, "systemsettings kcm_notifications\nsystemsettings5 kcm_notifications"},
    Programs{"xfce", Pane::LoginItems, "xfce4-session-settings\nxfce4-settings-manager"},
    Programs{"xfce", Pane::Network, "nm-connection-editor\nxfce4-settings-manager"},
    Programs{"xfce", Pane::Notifications, "xfce4-notifyd-config\nxfce4-settings-manager"},
    Programs{"x-cinnamon", Pane::LoginItems, "cinnamon-settings startup"},
    Programs{"x-cinnamon", Pane::Network, "cinnamon-settings network"},
    Programs{"x-cinnamon", Pane::Notifications, "cinnamon-settings notifications"},
    Programs{"mate", Pane::LoginItems, "mate-session-properties\nmate-control-center"},
    Programs{"mate", Pane::Network, "nm-connection-editor\nmate-control-center"},
    Programs{"mate", Pane::Notifications, "mate-notification-properties\nmate-control-center"},
    Programs{"lxqt", Pane::LoginItems, "lxqt-config-session\nlxqt-config"},
    Programs{"lxqt", Pane::Network, "nm-connection-editor\nlxqt-config"},
    Programs{"lxqt", Pane::Notifications, "lxqt-config-notificationd\nlxqt-config"},
    Programs{"lxde", Pane::LoginItems, "lxsession-edit"},
    Programs{"budgie", Pane::LoginItems, "budgie-desktop-settings"},
    Programs{"budgie", Pane::Network, "budgie-control-center network"},
    Programs{"budgie", Pane::Notifications, "budgie-control-center notifications"},
    Programs{"", Pane::Network, "nm-connection-editor\nconnman-gtk"},
};

} // namespace

QList<QStringList> settingsPrograms(Pane pane, const QString &currentDesktop)
{
    QStringList desktops = currentDesktop.toLower().split(QLatin1Char(':'), Qt::SkipEmptyParts);
    desktops.append(QString());
    QList<QStringList> commands;
    for (const QString &desktop : std::as_const(desktops)) {
        for (const Programs &entry : table) {
            if (entry.pane != pane || desktop != QLatin1String(entry.desktop))
                continue;
            const QStringList lines = QString::fromLatin1(entry.commands).split(QLatin1Char('\n'));
            for (const QString &line : lines)
                commands.append(line.split(QLatin1Char(' ')));
        }
    }
    return commands;
}

} // namespace zemrak::linux_
