#pragma once

#include "host/appearancesettings.h"

#include <QObject>

#include <memory>
#include <optional>

class QFont;
class QPalette;

namespace zemrak {

[[nodiscard]] bool looksDark(const QPalette &palette);
/// How much larger than usual text is to be, from 1 to 1.5, by the desktop's font and its scaling factor, if it has
/// one.
[[nodiscard]] double textScaleFor(const QFont &font, std::optional<double> factor);

/// How the person wants windows to look, followed while it changes. Main thread only.
class Appearance : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool dark READ isDark NOTIFY changed)
    Q_PROPERTY(double textScale READ textScale NOTIFY changed)
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY changed)

public:
    explicit Appearance(std::unique_ptr<AppearanceSettings> settings);

    [[nodiscard]] bool isDark() const { return m_dark; }
    [[nodiscard]] double textScale() const { return m_textScale; }
    [[nodiscard]] bool reducedMotion() const { return m_reducedMotion; }

    /// Take the place of what the desktop says; none ends that.
    void overrideDark(std::optional<bool> dark);
    void overrideTextScale(std::optional<double> scale);
    void overrideReducedMotion(std::optional<bool> reduced);

    /// Takes over what the desktop has answered by now, so that a window that is about to show begins in its colours.
    void settle() { m_settings->takeArrived(); }

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void update();

    std::unique_ptr<AppearanceSettings> m_settings;
    std::optional<bool> m_forcedDark;
    std::optional<double> m_forcedTextScale;
    std::optional<bool> m_forcedReducedMotion;
    bool m_dark = false;
    double m_textScale = 1;
    bool m_reducedMotion = false;
};

} // namespace zemrak
