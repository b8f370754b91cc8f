#include "answerserver.h"

#include <QHash>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>

namespace zemrak::bench {

class AnswerServer::Worker : public QObject
{
public:
    quint16 listen()
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(*socket); });
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
        if (!m_server.listen(QHostAddress::LocalHost))
            qFatal("No port to listen on");
        return m_server.serverPort();
    }

    void setAnswers(const QList<QByteArray> &bodies)
    {
        m_next.clear();
        m_responses.clear();
        for (const QByteArray &body : bodies) {
            m_responses.append("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: "
                + QByteArray::number(body.size()) + "\r\n\r\n" + body);
        }
    }

private:
    // Every request is a bare head in one piece.
    void answer(QTcpSocket &socket)
    {
        const QByteArray request = socket.readAll();
        if (!request.endsWith("\r\n\r\n") || m_responses.isEmpty())
            qFatal("A request came in pieces, or before there was an answer");
        qsizetype &next = m_next[request.split(' ').value(1)];
        socket.write(m_responses.at(next));
        next = (next + 1) % m_responses.size();
    }

    QTcpServer m_server{this};
    QList<QByteArray> m_responses;
    QHash<QByteArray, qsizetype> m_next; ///< by path
};

AnswerServer::AnswerServer()
    : m_worker(new Worker)
{
    m_worker->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread.start();
    QMetaObject::invokeMethod(
        m_worker, [this] { m_port = m_worker->listen(); }, Qt::BlockingQueuedConnection);
}

AnswerServer::~AnswerServer()
{
    m_thread.quit();
    m_thread.wait();
}

void AnswerServer::setAnswers(const QList<QByteArray> &bodies)
{
    QMetaObject::invokeMethod(
        m_worker, [this, bodies] { m_worker->setAnswers(bodies); }, Qt::BlockingQueuedConnection);
}

} // namespace zemrak::bench
