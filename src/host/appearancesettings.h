#pragma once

#include <functional>
#include <optional>

namespace zemrak {

/// How the person has told the desktop that windows are to look. Nothing here waits. Main thread only.
class AppearanceSettings
{
public:
    virtual ~AppearanceSettings() = default;

    // None: the desktop said nothing (yet), or there is no preference.
    [[nodiscard]] virtual std::optional<bool> prefersDark() const = 0;
    [[nodiscard]] virtual std::optional<bool> prefersNoAnimations() const = 0;
    /// 1 is the ordinary size.
    [[nodiscard]] virtual std::optional<double> textScale() const = 0;

    /// `changed` is called after any of the above has changed.
    virtual void onChanged(std::function<void()> changed) = 0;
    /// Takes over answers that have arrived but were not delivered yet.
    virtual void takeArrived() = 0;
};

} // namespace zemrak
