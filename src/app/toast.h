#pragma once

#include "base/clock.h"

#include <QObject>
#include <QString>

namespace zemrak {

/// The transient message over the window. Main thread only.
class Toast : public QObject
{
    Q_OBJECT

public:
    explicit Toast(Clock &clock, QObject *parent = nullptr);

    /// Null while no message is shown.
    [[nodiscard]] QString text() const { return m_text; }

    /// Shows `text` in place of what is shown, and clears whatever is shown 2.5 s later. A message that follows another
    /// one within that time is thus cleared with it; that is meant.
    void flash(const QString &text);

Q_SIGNALS:
    void changed();

private:
    void set(const QString &text);

    Clock &m_clock;
    QString m_text;
};

} // namespace zemrak
