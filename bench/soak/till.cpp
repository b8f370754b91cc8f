#include "soak/till.h"

#include <QTcpSocket>

#include <memory>

namespace zemrak::soak {

Till::Till()
{
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *link = m_server.nextPendingConnection()) {
            auto paper = std::make_shared<QByteArray>();
            connect(link, &QTcpSocket::readyRead, this, [link, paper] { *paper += link->readAll(); });
            connect(link, &QTcpSocket::disconnected, this, [this, link, paper] {
                take(*paper + link->readAll());
                link->deleteLater();
            });
        }
    });
}

bool Till::switchOn()
{
    if (!m_server.listen(QHostAddress::LocalHost, m_port))
        return false;
    m_port = m_server.serverPort();
    return true;
}

void Till::take(const QByteArray &paper)
{
    const qsizetype at = paper.indexOf(numberPrefix());
    if (at >= 0)
        ++m_papers[paper.mid(at, numberPrefix().size() + 6)];
}

} // namespace zemrak::soak
