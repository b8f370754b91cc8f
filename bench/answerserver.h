#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QThread>

namespace zemrak::bench {

/// A web server in a thread of its own, on a free port of 127.0.0.1. Connections stay open, as the service's do.
class AnswerServer
{
public:
    AnswerServer();
    ~AnswerServer();
    Q_DISABLE_COPY_MOVE(AnswerServer)

    [[nodiscard]] quint16 port() const { return m_port; }

    /// The bodies every path answers with from now on, in turn; each path begins with the first one.
    void setAnswers(const QList<QByteArray> &bodies);

private:
    class Worker;

    QThread m_thread;
    Worker *m_worker; ///< lives in m_thread
    quint16 m_port = 0;
};

} // namespace zemrak::bench
