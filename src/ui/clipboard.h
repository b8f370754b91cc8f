#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace zemrak {

/// The system's clipboard.
class Clipboard : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// Puts `text` there as plain text, without the invisible marks that only steer its direction on screen.
    Q_INVOKABLE static void copy(const QString &text);
};

} // namespace zemrak
