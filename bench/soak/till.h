#pragma once

#include <QHash>
#include <QObject>
#include <QTcpServer>

namespace zemrak::soak {

/// A receipt printer on the network that can be switched off, and the paper that came out of it.
class Till : public QObject
{
    Q_OBJECT

public:
    Till();

    [[nodiscard]] bool switchOn(); ///< on the same port each time
    void switchOff() { m_server.close(); }
    [[nodiscard]] quint16 port() const { return m_port; }

    /// Receipts by the number printed on them: how often each came out.
    [[nodiscard]] const QHash<QByteArray, int> &papers() const { return m_papers; }
    /// What every receipt's number begins with; six digits follow.
    [[nodiscard]] static QByteArray numberPrefix() { return "SOAK-"; }

private:
    void take(const QByteArray &paper);

    QHash<QByteArray, int> m_papers;
    quint16 m_port = 0;
    QTcpServer m_server; // last: its links still report here while they go
};

} // namespace zemrak::soak
