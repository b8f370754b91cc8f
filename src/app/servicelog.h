#pragma once

#include <QObject>
#include <QString>

namespace zemrak {

/// The last 4000 characters of what the service printed, and of what the application adds about it. Memory stays flat
/// however much is appended. Main thread only.
class ServiceLog : public QObject
{
    Q_OBJECT

public:
    /// Unicode code points kept.
    static constexpr qsizetype capacity = 4000;

    using QObject::QObject;

    [[nodiscard]] QString text() const { return m_text; }

    /// Adds at the end and drops from the start what no longer fits; a character made of several code points is
    /// dropped whole.
    void append(const QString &text);
    void replace(const QString &text);

Q_SIGNALS:
    void changed();

private:
    QString m_text;
};

/// The last `count` code points of `text`, without the rest of a character that the cut goes through.
[[nodiscard]] QString lastCharacters(const QString &text, qsizetype count);

} // namespace zemrak
