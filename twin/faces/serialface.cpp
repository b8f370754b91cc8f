#include "twin/faces/serialface.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace zemrak::twin {

namespace {

constexpr int lookMs = 20;

void makeRaw(int descriptor)
{
    termios settings{};
    if (tcgetattr(descriptor, &settings) == 0) {
        cfmakeraw(&settings);
        tcsetattr(descriptor, TCSANOW, &settings);
    }
}

} // namespace

SerialFace::SerialFace(Printer &printer)
    : m_printer(printer)
{
    m_looks.setInterval(lookMs);
    connect(&m_looks, &QTimer::timeout, this, &SerialFace::look);
}

SerialFace::~SerialFace()
{
    if (m_line)
        m_line->end();
    if (m_master >= 0)
        ::close(m_master);
    if (!m_link.isEmpty() && QFileInfo(m_link).symLinkTarget() == m_device)
        QFile::remove(m_link);
}

QString SerialFace::open(const QString &link)
{
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    m_device = QString::fromLocal8Bit(ptsname(m_master));
    // Opened and closed once: only then does the system say whether somebody has it open.
    const int device = ::open(m_device.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    makeRaw(device);
    ::close(device);
    if (!link.isEmpty()) {
        if (QFileInfo(link).isSymLink())
            QFile::remove(link);
        if (!QFile::link(m_device, link))
            return QStringLiteral("%1 cannot be made").arg(link);
        m_link = link;
    }
    m_looks.start();
    return {};
}

void SerialFace::look()
{
    pollfd state{.fd = m_master, .events = POLLIN, .revents = 0};
    if (poll(&state, 1, 0) < 0 || (state.revents & POLLHUP) != 0) // nobody has it open, and nothing is left of them
        if ((state.revents & POLLIN) == 0)
            return;
    m_looks.stop();
    makeRaw(m_master);
    Line *line = m_printer.openLine(QStringLiteral("serial-%1").arg(++m_count));
    m_line = line;
    m_connection = std::make_unique<Connection>(dup(m_master), nullptr);
    Connection *connection = m_connection.get();
    connect(connection, &Connection::received, line, [connection, line](const QByteArray &bytes) {
        line->receive(bytes);
        connection->setWanted(line->room());
    });
    connect(line, &Line::roomChanged, connection, [connection, line] { connection->setWanted(line->room()); });
    connect(line, &Line::answer, connection, &Connection::write);
    connect(connection, &Connection::finished, this, &SerialFace::hangUp);
    connection->setWanted(line->room());
}

void SerialFace::hangUp()
{
    if (m_line)
        m_line->end();
    m_line = nullptr;
    m_connection.release()->deleteLater(); // its signal is being delivered
    m_looks.start();
}

} // namespace zemrak::twin
