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
    /// The window's, before anybody changed it.
    static constexpr QSize firstSize{1020, 760};

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

/// Puts `window` where it was. The first time it keeps its size, as far as its screen has room for it.
void restorePlacement(QWindow &window, const UserDefaults &defaults);
void storePlacement(const QWindow &window, UserDefaults &defaults);

} // namespace zemrak
