#pragma once

#include "ui/window/shell/uicontext.h"

#include <QString>

#include <functional>
#include <span>

namespace zemrak::test {

/// One picture of the window: which situation, and what is opened in it.
struct Shot
{
    QString name; ///< of the file, before "-light.png" and "-dark.png"
    QString situation;
    std::function<void(UiContext &)> open;
    bool checked = false; ///< the picture is of the end of the connection check that `open` has started
};

/// To add a page, sheet or situation, add a row to the table in shots.cpp. The tests create every one of them too.
[[nodiscard]] std::span<const Shot> shots();

} // namespace zemrak::test
