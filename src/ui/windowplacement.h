#pragma once

#include <QRect>
#include <QStringList>

#include <optional>

class QWindow;

namespace zemrak {

class UserDefaults;

/// Where the window was, as it is kept: x, y, width, height, and whether it filled the screen.
struct WindowPlacement
{
    QRect frame; ///< of the content, in the desktop's coordinates; the ordinary one, also of a maximised window
    bool maximized = false;

    [[nodiscard]] QStringList toStrings() const;
    /// None for anything that toStrings() would not have written.
    [[nodiscard]] static std::optional<WindowPlacement> fromStrings(const QStringList &strings);
    bool operator==(const WindowPlacement &) const = default;
};

/// `frame` moved and, where it must be, made smaller, so that all of it lies on the one of `screens` that holds most of
/// it; on the first one when none holds any. `screens` is not empty.
[[nodiscard]] QRect fitted(const QRect &frame, const QList<QRect> &screens);

void restorePlacement(QWindow &window, const UserDefaults &defaults);
void storePlacement(const QWindow &window, UserDefaults &defaults);

} // namespace zemrak
