#pragma once

#include "ui/kit/appearance.h"
#include "ui/kit/clipboard.h"
#include "ui/kit/colors.h"
#include "ui/kit/heldkeys.h"
#include "ui/kit/icons.h"
#include "ui/kit/kitengine.h"
#include "ui/kit/roworder.h"

#include <QtQml/qqml.h>

class QJSEngine;

namespace zemrak {

// What QML may see of the kit's C++.

struct AppearanceForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::Appearance)
    QML_NAMED_ELEMENT(Appearance)
    QML_SINGLETON

public:
    static Appearance *create(QQmlEngine *engine, QJSEngine *) { return appearanceOf(*engine); }
};

struct ClipboardForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::Clipboard)
    QML_NAMED_ELEMENT(Clipboard)
    QML_SINGLETON
};

struct HeldKeysForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::HeldKeys)
    QML_NAMED_ELEMENT(HeldKeys)
};

struct RowOrderForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::RowOrder)
    QML_NAMED_ELEMENT(RowOrder)
};

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

/// The table of symbols.
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
