#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

namespace zemrak::twin {

/// An open descriptor, a socket's or a terminal's, that is read only as far as it is asked to be: what is not read
/// stays with the system, and the other side feels it.
class Connection : public QObject
{
    Q_OBJECT

public:
    /// Takes the descriptor over.
    explicit Connection(int descriptor, QObject *parent);
    ~Connection() override;

    /// Reads up to so many bytes from now on, and emits received() with what comes; 0 = none.
    void setWanted(qsizetype bytes);
    /// Writes as fast as the other side takes it; what it has not taken is bounded, and more is dropped.
    void write(const QByteArray &bytes);
    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    /// @param reset a socket's other side sees a connection that broke. Emits nothing.
    void close(bool reset = false);
    /// Closes once everything has been written.
    void closeWhenWritten();

Q_SIGNALS:
    void received(const QByteArray &bytes);
    /// The other side will send no more. @param lost it broke off
    void finished(bool lost);

private:
    void readSome();
    void writeSome();

    int m_descriptor;
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
    QByteArray m_unwritten;
    qsizetype m_wanted = 0;
    bool m_finished = false;
    bool m_closing = false;
};

} // namespace zemrak::twin
