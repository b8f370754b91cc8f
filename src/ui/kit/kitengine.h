#pragma once

class QQmlEngine;

namespace zemrak {

class Appearance;

/// Gives `engine` what Zemrak.Kit needs besides its registration: image providers, typeface, appearance.
/// @param appearance outlives the engine
void installKit(QQmlEngine &engine, Appearance &appearance);
/// What installKit() was given. The engine's JavaScript does not own it.
[[nodiscard]] Appearance *appearanceOf(const QQmlEngine &engine);

} // namespace zemrak
