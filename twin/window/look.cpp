#include "twin/window/look.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPalette>

namespace zemrak::twin {

Look::Look(bool dark)
    : ground(dark ? 0x020817 : 0xf8fafc)
    , card(dark ? 0x0b1324 : 0xffffff)
    , border(dark ? 0x1e293b : 0xe2e8f0)
    , muted(dark ? 0x94a3b8 : 0x64748b)
    , text(dark ? 0xf8fafc : 0x0f172a)
    , accent(0x9d4edd)
    , track(dark ? 0x334155 : 0xcbd5e1)
    , green(dark ? 0x4ade80 : 0x15803d)
    , red(dark ? 0xf87171 : 0xdc2626)
    , amber(dark ? 0xfbbf24 : 0xb45309)
{
}

Look Look::ofDesktop()
{
    return Look(QGuiApplication::palette().color(QPalette::Window).lightness() < 128);
}

void Look::loadTypeface()
{
    for (const char *weight : {"Regular", "Medium", "Bold"})
        QFontDatabase::addApplicationFont(QStringLiteral(":/zemrak/twin/Tajawal-%1.ttf").arg(QLatin1String(weight)));
    QFont font(QStringLiteral("Tajawal"));
    font.setPixelSize(15);
    QGuiApplication::setFont(font);
}

QPalette Look::palette() const
{
    QPalette colors(card, ground);
    for (const auto &[role, color] :
        {std::pair{QPalette::Window, ground}, {QPalette::WindowText, text}, {QPalette::Base, card},
            {QPalette::Text, text}, {QPalette::Button, card}, {QPalette::ButtonText, text}, {QPalette::Mid, border},
            {QPalette::Dark, border}, {QPalette::Highlight, accent}, {QPalette::HighlightedText, QColor(Qt::white)},
            {QPalette::ToolTipBase, card}, {QPalette::ToolTipText, text}})
        colors.setColor(role, color);
    return colors;
}

// No rule for choices: the toolkit's own style draws them right to left.
QString Look::sheet() const
{
    return QStringLiteral("#panel { background: %1; border-left: 1px solid %2; }"
                          "#title { font-size: 20px; font-weight: 700; }"
                          "#state { font-size: 15px; font-weight: 500; }"
                          "#place { color: %3; font-size: 13px; }"
                          "#section { color: %3; font-size: 13px; font-weight: 500; }"
                          "QPushButton { min-height: 32px; padding: 0 12px; border: 1px solid %2; border-radius: 8px;"
                          " background: %1; color: %5; }"
                          "QPushButton:hover { border-color: %3; }"
                          "QPushButton:focus { border: 2px solid %4; }"
                          "QPushButton:checked { background: %4; border-color: %4; color: #ffffff; font-weight: 500; }"
                          "QPushButton:checked:focus { border-color: %5; }")
        .arg(card.name(), border.name(), muted.name(), accent.name(), text.name());
}

} // namespace zemrak::twin
