#pragma once

#include <QObject>

namespace zemrak {

/// The system's clipboard.
class Clipboard : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Puts `text` there as plain text, without the invisible marks that only steer its direction on screen.
    Q_INVOKABLE static void copy(const QString &text);
};

} // namespace zemrak
