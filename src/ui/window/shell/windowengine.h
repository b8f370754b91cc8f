#pragma once

#include "app/mainwindow.h"

#include <memory>

class QQmlEngine;

namespace zemrak {

class Appearance;
class DesignerPresenter;

/// An engine that knows Zemrak.Kit and Zemrak.Window, and has the UiContext of the latter. What it is given outlives
/// it.
[[nodiscard]] std::unique_ptr<QQmlEngine> makeWindowEngine(
    const MainWindowServices &services, Appearance &appearance, DesignerPresenter &designer);

} // namespace zemrak
