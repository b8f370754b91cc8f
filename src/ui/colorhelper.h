#pragma once

#include "ui/colors.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace zemrak {

/// The colour functions, for the theme.
class Colors : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE [[nodiscard]] static QColor fromHex(const QString &hex) { return colorFromHex(hex); }
    Q_INVOKABLE [[nodiscard]] static QColor readable(const QColor &color, const QColor &ground, const QColor &ink)
    {
        return zemrak::readable(color, ground, ink);
    }
};

} // namespace zemrak
