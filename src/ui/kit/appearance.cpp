#include "ui/kit/appearance.h"

#include <QEvent>
#include <QFont>
#include <QGuiApplication>
#include <QPalette>

#include <algorithm>

namespace zemrak {

namespace {

constexpr double ordinaryPointSize = 11; // the largest that desktops ship as theirs
constexpr double largestScale = 1.5;

} // namespace

bool looksDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF();
}

double textScaleFor(const QFont &font, std::optional<double> factor)
{
    const double byFont = font.pointSizeF() / ordinaryPointSize; // negative for a font sized in pixels
    return std::clamp(std::max(byFont, factor.value_or(1)), 1.0, largestScale);
}

Appearance::Appearance(std::unique_ptr<AppearanceSettings> settings)
    : m_settings(std::move(settings))
{
    m_settings->onChanged([this] { update(); });
    qApp->installEventFilter(this);
    update();
}

void Appearance::overrideDark(std::optional<bool> dark)
{
    m_forcedDark = dark;
    update();
}

void Appearance::overrideTextScale(std::optional<double> scale)
{
    m_forcedTextScale = scale;
    update();
}

void Appearance::overrideReducedMotion(std::optional<bool> reduced)
{
    m_forcedReducedMotion = reduced;
    update();
}

bool Appearance::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qApp
        && (event->type() == QEvent::ApplicationPaletteChange || event->type() == QEvent::ApplicationFontChange))
        update();
    return QObject::eventFilter(watched, event);
}

void Appearance::update()
{
    const bool dark = m_forcedDark.value_or(m_settings->prefersDark().value_or(looksDark(QGuiApplication::palette())));
    const double scale = m_forcedTextScale.value_or(textScaleFor(QGuiApplication::font(), m_settings->textScale()));
    const bool reduced = m_forcedReducedMotion.value_or(m_settings->prefersNoAnimations().value_or(false));
    if (dark == m_dark && qFuzzyCompare(scale, m_textScale) && reduced == m_reducedMotion)
        return;
    m_dark = dark;
    m_textScale = scale;
    m_reducedMotion = reduced;
    Q_EMIT changed();
}

} // namespace zemrak
