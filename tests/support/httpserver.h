#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>

#include <functional>

namespace zemrak::test {

struct HttpRequest
{
    QByteArray raw; ///< every byte, head and body
    QByteArray method;
    QByteArray target;
    QByteArray body;

    /// The value as it stood on the line; null when the header is not there.
    [[nodiscard]] QByteArray header(const QByteArray &name) const;
};

/// A server on a free port of 127.0.0.1 that records what it is asked, byte by byte, and answers with raw bytes.
class HttpServer : public QObject
{
    Q_OBJECT

public:
    /// What goes back over the socket. The answer closes the connection where it says so itself.
    using Answer = std::function<void(const HttpRequest &request, QTcpSocket &socket)>;

    HttpServer();

    [[nodiscard]] quint16 port() const { return m_server.serverPort(); }
    [[nodiscard]] const QList<HttpRequest> &requests() const { return m_requests; }
    /// With any query, where `target` has none.
    [[nodiscard]] QList<HttpRequest> requestsTo(const QByteArray &target) const;
    void forget() { m_requests.clear(); }

    void answerWith(Answer answer) { m_answer = std::move(answer); }
    /// A complete answer with `body`.
    void answerJson(const QByteArray &body, const QByteArray &status = "200 OK");

    [[nodiscard]] static QByteArray response(const QByteArray &body, const QByteArray &status = "200 OK");

private:
    void read(QTcpSocket &socket);

    QHash<QTcpSocket *, QByteArray> m_received;
    QList<HttpRequest> m_requests;
    Answer m_answer;
    QTcpServer m_server; // last: its sockets still report here while they go
};

} // namespace zemrak::test
