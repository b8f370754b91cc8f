#include "twin/faces/connection.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace zemrak::twin {

namespace {

constexpr qsizetype pieceBytes = 16 * 1024;
constexpr qsizetype unwrittenMost = 256 * 1024;

} // namespace

Connection::Connection(int descriptor, QObject *parent)
    : QObject(parent)
    , m_descriptor(descriptor)
    , m_readable(descriptor, QSocketNotifier::Read)
    , m_writable(descriptor, QSocketNotifier::Write)
{
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    m_readable.setEnabled(false);
    m_writable.setEnabled(false);
    connect(&m_readable, &QSocketNotifier::activated, this, &Connection::readSome);
    connect(&m_writable, &QSocketNotifier::activated, this, &Connection::writeSome);
}

Connection::~Connection()
{
    close();
}

void Connection::setWanted(qsizetype bytes)
{
    m_wanted = bytes;
    m_readable.setEnabled(isOpen() && !m_finished && bytes > 0);
}

void Connection::readSome()
{
    QByteArray bytes(std::min(m_wanted, pieceBytes), Qt::Uninitialized);
    const ssize_t size = ::read(m_descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()));
    if (size > 0) {
        bytes.truncate(size);
        Q_EMIT received(bytes);
        return;
    }
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    m_finished = true;
    m_readable.setEnabled(false);
    Q_EMIT finished(size < 0);
}

void Connection::write(const QByteArray &bytes)
{
    if (!isOpen() || m_unwritten.size() + bytes.size() > unwrittenMost)
        return;
    m_unwritten += bytes;
    writeSome();
}

void Connection::writeSome()
{
    while (isOpen() && !m_unwritten.isEmpty()) {
        const auto all = static_cast<std::size_t>(m_unwritten.size());
        ssize_t size = ::send(m_descriptor, m_unwritten.constData(), all, MSG_NOSIGNAL);
        if (size < 0 && errno == ENOTSOCK)
            size = ::write(m_descriptor, m_unwritten.constData(), all);
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0 && errno != EAGAIN)
            m_unwritten.clear(); // the reading side learns of the end
        if (size <= 0)
            break;
        m_unwritten.remove(0, size);
    }
    m_writable.setEnabled(isOpen() && !m_unwritten.isEmpty());
    if (m_closing && m_unwritten.isEmpty())
        close();
}

void Connection::closeWhenWritten()
{
    m_closing = true;
    writeSome();
}

void Connection::close(bool reset)
{
    if (!isOpen())
        return;
    m_readable.setEnabled(false);
    m_writable.setEnabled(false);
    if (reset) {
        const linger atOnce{.l_onoff = 1, .l_linger = 0};
        setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    }
    ::close(std::exchange(m_descriptor, -1));
}

} // namespace zemrak::twin
