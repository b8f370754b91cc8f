#pragma once

#include "ui/settingsportal.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <optional>

class QFont;
class QJSEngine;
class QPalette;
class QQmlEngine;

namespace zemrak {

[[nodiscard]] bool looksDark(const QPalette &palette);
/// How much larger than usual text is to be, from 1 to 1.5, by the desktop's font and its scaling factor, if it has
/// one.
[[nodiscard]] double textScaleFor(const QFont &font, std::optional<double> factor);

/// How the person wants windows to look, followed while it changes. Main thread only.
class Appearance : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ isDark NOTIFY changed)
    Q_PROPERTY(double textScale READ textScale NOTIFY changed)
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY changed)

public:
    /// No default: QML would make one of its own instead of calling create().
    explicit Appearance(QObject *parent);

    static Appearance *create(QQmlEngine *engine, QJSEngine *);

    [[nodiscard]] bool isDark() const { return m_dark; }
    [[nodiscard]] double textScale() const { return m_textScale; }
    [[nodiscard]] bool reducedMotion() const { return m_reducedMotion; }

    /// Stand in for what the desktop says, from now on; none gives it the word again.
    void overrideDark(std::optional<bool> dark);
    void overrideTextScale(std::optional<double> scale);
    void overrideReducedMotion(std::optional<bool> reduced);

    /// Takes over what the desktop has answered by now, so that a window that is about to show begins in its colours.
    void settle() { m_portal.takeArrived(); }

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void update();

    SettingsPortal m_portal;
    std::optional<bool> m_forcedDark;
    std::optional<double> m_forcedTextScale;
    std::optional<bool> m_forcedReducedMotion;
    bool m_dark = false;
    double m_textScale = 1;
    bool m_reducedMotion = false;
};

} // namespace zemrak
