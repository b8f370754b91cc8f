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

QString Look::sheet() const
{
    return QStringLiteral(
        "QWidget { color: %1; background: transparent; }"
        "#twin { background: %2; }"
        "#panel, QMessageBox { background: %3; }"
        "#panel { border-left: 1px solid %4; }"
        "#title { font-size: 20px; font-weight: 700; }"
        "#state { font-size: 15px; font-weight: 500; }"
        "#place, #hint { color: %5; font-size: 13px; }"
        "#section { color: %5; font-size: 13px; font-weight: 500; }"
        "QScrollArea, #well { border: 0; background: %2; }"
        "QPushButton { min-height: 32px; padding: 0 12px; border: 1px solid %4; border-radius: 8px; background: %3; }"
        "QPushButton:hover { border-color: %5; }"
        "QPushButton:focus, QComboBox:focus { border: 2px solid %6; }"
        "QPushButton:checked { background: %6; border-color: %6; color: #ffffff; font-weight: 500; }"
        "QComboBox { min-height: 32px; padding: 0 12px; border: 1px solid %4; border-radius: 8px; background: %3; }"
        "QComboBox::drop-down { border: 0; width: 24px; }"
        "QComboBox QAbstractItemView { background: %3; border: 1px solid %4; selection-background-color: %6;"
        " selection-color: #ffffff; }"
        "QScrollBar:vertical { width: 10px; background: %2; }"
        "QScrollBar::handle:vertical { background: %7; border-radius: 5px; min-height: 32px; }"
        "QScrollBar::add-line, QScrollBar::sub-line { height: 0; }")
        .arg(text.name(), ground.name(), card.name(), border.name(), muted.name(), accent.name(), track.name());
}

} // namespace zemrak::twin
