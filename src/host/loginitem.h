#pragma once

#include <QLatin1String>
#include <QString>

#include <optional>

namespace zemrak {

/// What the desktop would do with the application when the person logs in. The numbers are printed for support.
enum class LoginItemStatus
{
    NotRegistered = 0,
    Enabled = 1,
    RequiresApproval = 2, ///< registered, but switched off in the desktop's own settings
    NotFound = 3, ///< registered, but nothing would start: the program is gone or the entry is broken
};

/// The argument of an automatic start: the login item starts the program with it, and nothing else does.
inline constexpr QLatin1String automaticStartArgument("--automatic-start");

/// The desktop's entry that starts this application at login. Reads and writes small local files only. Main thread.
class LoginItem
{
public:
    virtual ~LoginItem() = default;

    /// Read anew at each call.
    [[nodiscard]] virtual LoginItemStatus status() const = 0;
    /// Registers the running bundle, in place of what was registered, and switched on. None: done; else why not, as one
    /// sentence.
    [[nodiscard]] virtual std::optional<QString> registerItem() = 0;
    /// Removes the entry. None: there is none any more; else why not, as one sentence.
    [[nodiscard]] virtual std::optional<QString> unregisterItem() = 0;
};

} // namespace zemrak
