#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>

namespace zemrak::twin {

/// What a twin has been through, counted and, for the latest of it, line by line.
class Journal
{
public:
    void connected(const QString &line)
    {
        ++m_connections;
        add(line, QStringLiteral("connected"), {});
    }
    void refused(const QString &line)
    {
        ++m_refused;
        add(line, QStringLiteral("refused"), {});
    }
    void ended(const QString &line, bool lost);
    void received(qsizetype bytes) { m_received += bytes; }
    void printed(qsizetype bytes) { m_printed += bytes; }
    void asked(const QString &line, const QString &question);
    void answered(const QString &line, const QByteArray &bytes);
    void clear() { *this = {}; }

    [[nodiscard]] qint64 receivedBytes() const { return m_received; }
    [[nodiscard]] qint64 printedBytes() const { return m_printed; }
    [[nodiscard]] QJsonObject toJson() const;

private:
    void add(const QString &line, const QString &what, const QString &detail);

    qint64 m_received = 0;
    qint64 m_printed = 0;
    int m_connections = 0;
    int m_refused = 0;
    int m_ended = 0;
    int m_lost = 0;
    int m_answers = 0;
    QMap<QString, int> m_questions;
    QJsonArray m_log; ///< the latest, oldest first
};

} // namespace zemrak::twin
