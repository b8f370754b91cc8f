#pragma once

#include "ui/icons.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace zemrak {

/// The table of symbols, for QML.
class Icons : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE [[nodiscard]] static bool mirrors(const QString &symbol)
    {
        const IconEntry *icon = findIcon(symbol);
        return icon && icon->mirrors;
    }
};

} // namespace zemrak
