#include "ui/window/shell/windowplacement.h"

#include "host/userdefaults.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace zemrak {

namespace {

constexpr QLatin1String key("mainWindowFrame");
constexpr int farthest = 100'000; // larger coordinates mean a damaged file
constexpr QSize titleBar(0, 40); // an estimate: its height is known only once the window is shown

qint64 area(const QRect &rect)
{
    return rect.isEmpty() ? 0 : qint64(rect.width()) * rect.height();
}

} // namespace

QStringList WindowPlacement::toStrings() const
{
    return {QString::number(frame.x()), QString::number(frame.y()), QString::number(frame.width()),
        QString::number(frame.height()), maximized ? QStringLiteral("maximized") : QStringLiteral("normal")};
}

std::optional<WindowPlacement> WindowPlacement::fromStrings(const QStringList &strings)
{
    if (strings.size() != 5)
        return {};
    int numbers[4] = {};
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        numbers[i] = strings.at(i).toInt(&ok);
        if (!ok || numbers[i] < -farthest || numbers[i] > farthest)
            return {};
    }
    const QRect frame(numbers[0], numbers[1], numbers[2], numbers[3]);
    if (frame.isEmpty())
        return {};
    return WindowPlacement{frame, strings.at(4) == QLatin1String("maximized")};
}

QRect fitted(const QRect &frame, const QList<QRect> &screens)
{
    const auto held = [&frame](const QRect &screen) { return area(screen.intersected(frame)); };
    const QRect screen = *std::ranges::max_element(screens, {}, held);
    QRect result(frame.topLeft(), frame.size().boundedTo(screen.size()));
    result.moveLeft(std::clamp(result.left(), screen.left(), screen.right() + 1 - result.width()));
    result.moveTop(std::clamp(result.top(), screen.top(), screen.bottom() + 1 - result.height()));
    return result;
}

void restorePlacement(QWindow &window, const UserDefaults &defaults)
{
    const std::optional<WindowPlacement> placement = WindowPlacement::fromStrings(defaults.strings(key));
    if (!placement) { // the desktop places it
        if (const QScreen *screen = window.screen())
            window.resize(window.size().boundedTo(screen->availableSize() - titleBar));
        return;
    }
    QList<QRect> screens;
    for (const QScreen *screen : QGuiApplication::screens())
        screens.append(screen->availableGeometry());
    if (screens.isEmpty())
        return;
    window.setGeometry(fitted(placement->frame, screens));
    if (placement->maximized)
        window.setWindowStates(Qt::WindowMaximized);
}

void storePlacement(const QWindow &window, UserDefaults &defaults)
{
    const bool maximized = window.windowStates() & (Qt::WindowMaximized | Qt::WindowFullScreen);
    WindowPlacement placement{window.geometry(), maximized};
    if (maximized) { // the ordinary frame is the one it had before
        if (const auto before = WindowPlacement::fromStrings(defaults.strings(key)))
            placement.frame = before->frame;
        else
            placement.frame = {placement.frame.topLeft(), WindowPlacement::firstSize};
    }
    defaults.setStrings(key, placement.toStrings());
}

} // namespace zemrak
