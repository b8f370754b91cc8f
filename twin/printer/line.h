#pragma once

#include "twin/printer/realtime.h"

#include <QObject>

namespace zemrak::twin {

/// One way to the printer, as a face opens it: a TCP connection, say. It lives from then on until all of its bytes have
/// been printed, and the face may be gone before that.
class Line : public QObject
{
    Q_OBJECT

public:
    Line(const QString &name, bool star, QObject *parent);

    [[nodiscard]] const QString &name() const { return m_name; }

    // For the face.
    /// Bytes that the printer takes now; the face leaves the rest where it is, until roomChanged().
    [[nodiscard]] qsizetype room() const { return m_room; }
    void receive(QByteArrayView bytes);
    /// No more will come. @param lost the other side went without saying so
    void end(bool lost = false);

    // For the printer.
    [[nodiscard]] const QByteArray &waiting() const { return m_waiting; }
    void printed(qsizetype bytes) { m_waiting.remove(0, bytes); }
    void forget() { m_waiting.clear(); }
    [[nodiscard]] bool hasEnded() const { return m_ended; }
    [[nodiscard]] qint64 received() const { return m_received; }
    void setRoom(qsizetype room);
    /// Whether nothing but questions that are answered on arrival has come: such a line prints nothing and keeps nobody
    /// waiting.
    [[nodiscard]] bool onlyAsks() const { return m_onlyAsks; }

    int automaticStatus = 0; ///< what GS a asked to be told of; for Star 1 when it is on
    int offlineResponse = 0; ///< the mode that GS ( H, function 49, chose

Q_SIGNALS:
    // For the face.
    void roomChanged();
    void answer(const QByteArray &bytes);
    void closeWanted(bool reset);
    // For the printer.
    void arrived(qsizetype bytes);
    void realTime(const zemrak::twin::RealTimeCommand &command);
    void ended(bool lost);

private:
    void dropQuestions();

    QString m_name;
    bool m_star;
    RealTimeScanner m_scanner;
    QByteArray m_waiting;
    qint64 m_received = 0;
    qsizetype m_room = 0;
    bool m_ended = false;
    bool m_onlyAsks = true;
};

} // namespace zemrak::twin
