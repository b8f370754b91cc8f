#include "support/httpserver.h"

#include <QHostAddress>

namespace zemrak::test {

QByteArray HttpRequest::header(const QByteArray &name) const
{
    const QByteArray head = raw.left(raw.indexOf("\r\n\r\n"));
    for (const QByteArray &line : head.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).compare(name, Qt::CaseInsensitive) == 0)
            return line.endsWith('\r') ? line.mid(colon + 2).chopped(1) : line.mid(colon + 2);
    }
    return {};
}

HttpServer::HttpServer()
{
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = m_server.nextPendingConnection()) {
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(*socket); });
            connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
                m_received.remove(socket);
                socket->deleteLater();
            });
        }
    });
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("No port to listen on");
}

QList<HttpRequest> HttpServer::requestsTo(const QByteArray &target) const
{
    QList<HttpRequest> found;
    for (const HttpRequest &request : m_requests) {
        if (request.target == target || request.target.startsWith(target + '?'))
            found.append(request);
    }
    return found;
}

QByteArray HttpServer::response(const QByteArray &body, const QByteArray &status)
{
    return "HTTP/1.1 " + status + "\r\nContent-Type: application/json\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

void HttpServer::answerJson(const QByteArray &body, const QByteArray &status)
{
    m_answer = [bytes = response(body, status)](const HttpRequest &, QTcpSocket &socket) { socket.write(bytes); };
}

void HttpServer::read(QTcpSocket &socket)
{
    QByteArray &received = m_received[&socket];
    received += socket.readAll();
    const qsizetype headEnd = received.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return;
    HttpRequest request{.raw = received};
    const qsizetype bodyStart = headEnd + 4;
    const qsizetype length = request.header("Content-Length").toLongLong();
    if (received.size() < bodyStart + length)
        return;
    request.body = received.mid(bodyStart, length);
    request.raw.truncate(bodyStart + length);
    received.remove(0, bodyStart + length);
    const QList<QByteArray> line = request.raw.left(request.raw.indexOf("\r\n")).split(' ');
    request.method = line.value(0);
    request.target = line.value(1);
    m_requests.append(request);
    if (m_answer)
        m_answer(request, socket);
}

} // namespace zemrak::test
