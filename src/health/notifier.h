#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace zemrak {

/// May this program post notifications? The numbers are those printed by the command-line check.
enum class NotificationStatus
{
    NotDetermined = 0,
    Denied = 1,
    Authorized = 2,
    Provisional = 3,
    Ephemeral = 4
};

/// The desktop's notifications. Never blocks; errors of the desktop are ignored. Main thread only, callbacks
/// included.
class Notifier
{
public:
    virtual ~Notifier() = default;

    /// Begins to listen for clicks. Called once at start.
    virtual void install() = 0;
    /// `activationToken`: the desktop's token that lets a window come to the front; empty where it gives none.
    using Clicked = std::function<void(const QString &activationToken)>;
    /// Called whenever the person clicks one of our notifications. Set before install().
    virtual void onClicked(Clicked clicked) = 0;

    using StatusDone = std::function<void(NotificationStatus status)>;
    /// `error` is empty when nothing went wrong.
    using PermissionDone = std::function<void(bool granted, const QString &error)>;
    virtual void status(StatusDone done) = 0;
    virtual void requestPermission(PermissionDone done) = 0;

    /// Shows a notification at once. Texts are plain: markup in them is shown, not interpreted.
    virtual void post(const QString &id, const QString &title, const QString &body, bool critical) = 0;
    /// Takes back the notifications posted under these ids, also those of an earlier run of the application.
    virtual void retract(const QStringList &ids) = 0;
};

} // namespace zemrak
