#pragma once

#include "twin/printer/printer.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTimer>

#include <functional>

namespace zemrak::twin {

/// A TCP port of the printer, as open or as closed as the knob `connections` says.
class Door : public QTcpServer
{
    Q_OBJECT

public:
    /// @param opened takes over the descriptor of each connection, and returns whether it is an object with an end: its
    /// destroyed() frees the place
    Door(Printer &printer, const QString &name, std::function<QObject *(int descriptor, const QString &name)> opened);

    ~Door() override;

    /// @param port 0 = any free one
    /// @returns an empty string, or why it cannot
    [[nodiscard]] QString open(const QHostAddress &address, quint16 port);
    /// Also while it refuses connections.
    [[nodiscard]] quint16 port() const { return m_port; }

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    [[nodiscard]] bool listenAgain(int backlog);
    void follow();
    void fillQueue();
    void admit(int descriptor);

    Printer &m_printer;
    QString m_name;
    std::function<QObject *(int, const QString &)> m_opened;
    QHostAddress m_address;
    quint16 m_port = 0;
    int m_backlog = 0;
    int m_open = 0;
    int m_count = 0;
    QList<int> m_held; ///< accepted while they ought to wait
    int m_filler = -1; ///< a connection to ourselves that takes the last place of the queue
    QTimer m_retry;
};

} // namespace zemrak::twin
