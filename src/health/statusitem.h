#pragma once

#include "health/statuscontent.h"

#include <QIcon>

#include <functional>

namespace zemrak {

/// The application's place among the desktop's status icons. Everything on the main thread; nothing here waits for the
/// desktop.
class StatusItem
{
public:
    virtual ~StatusItem() = default;

    /// Called once at the start and then whenever something about the icon or the content is new. Kept until there is
    /// a tray, and shown again in every tray that comes later. A menu that is open stays open. Ends with this object.
    virtual void show(const QIcon &icon, const StatusContent &content) = 0;

    using OnCommand = std::function<void(StatusCommand)>;
    /// Called for every entry that the person chooses, and with ShowWindow for a click on the icon itself. Set before
    /// the first show().
    virtual void onCommand(OnCommand chosen) = 0;

    /// There is a tray that can show the item now. False until the desktop has said so, shortly after the start.
    [[nodiscard]] virtual bool isAvailable() const = 0;
};

} // namespace zemrak
