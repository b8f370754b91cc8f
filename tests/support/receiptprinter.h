#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QList>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <memory>

namespace zemrak::test {

/// A receipt printer on the network: it takes what it is sent. Probes, which send nothing, leave no receipt.
class ReceiptPrinter : public QObject
{
public:
    ReceiptPrinter()
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *link = m_server.nextPendingConnection()) {
                auto paper = std::make_shared<QByteArray>();
                connect(link, &QTcpSocket::readyRead, this, [link, paper] { *paper += link->readAll(); });
                connect(link, &QTcpSocket::disconnected, this, [this, link, paper] {
                    if (!paper->isEmpty())
                        m_receipts.append(*paper);
                    link->deleteLater();
                });
            }
        });
    }

    [[nodiscard]] bool switchOn(quint16 port = 0) { return m_server.listen(QHostAddress::LocalHost, port); }
    void switchOff() { m_server.close(); }
    [[nodiscard]] quint16 port() const { return m_server.serverPort(); }
    [[nodiscard]] const QList<QByteArray> &receipts() const { return m_receipts; }

    /// Adds it under this name to the settings of a service that has not been started in this home yet.
    void plant(const QTemporaryDir &home, const QByteArray &name) const
    {
        const QDir folder(home.filePath(QStringLiteral("Library/Application Support/Zemrak Local Print")));
        QFile settings(folder.filePath(QStringLiteral("settings.json")));
        const QByteArray text = R"({"printers":[{"id":"paper","name":")" + name + R"(","host":"127.0.0.1","port":)"
            + QByteArray::number(port()) + R"(,"transport":"raw","dialogue":{"language":"none"}}]})";
        if (!folder.mkpath(QStringLiteral(".")) || !settings.open(QIODevice::WriteOnly) || settings.write(text) < 0)
            qFatal("The service's settings cannot be written");
    }

private:
    QList<QByteArray> m_receipts;
    QTcpServer m_server; // last: its links still report here while they go
};

} // namespace zemrak::test
