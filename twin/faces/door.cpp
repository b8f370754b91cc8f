#include "twin/faces/door.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zemrak::twin {

namespace {

constexpr int usualBacklog = 16;
constexpr int connectionsMost = 128;
constexpr int retryMs = 200;
// A printer's network card keeps little: what it has not printed stays with the sender.
constexpr int receiveBuffer = 8 * 1024;
constexpr int segment = 1460; // of Ethernet; those of loopback are larger than that whole buffer

void closeWithReset(int descriptor)
{
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    ::close(descriptor);
}

} // namespace

Door::Door(Printer &printer, const QString &name, std::function<QObject *(int, const QString &)> opened)
    : m_printer(printer)
    , m_name(name)
    , m_opened(std::move(opened))
{
    m_retry.setInterval(retryMs);
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &Door::follow);
    connect(&printer, &Printer::knobsChanged, this, &Door::follow);
}

Door::~Door()
{
    for (const int descriptor : std::as_const(m_held))
        closeWithReset(descriptor);
    if (m_filler >= 0)
        closeWithReset(m_filler);
}

QString Door::open(const QHostAddress &address, quint16 port)
{
    m_address = address;
    m_port = port;
    if (!listenAgain(usualBacklog))
        return errorString();
    m_port = serverPort();
    follow();
    return {};
}

bool Door::listenAgain(int backlog)
{
    if (isListening() && m_backlog == backlog)
        return true;
    close();
    if (m_filler >= 0)
        closeWithReset(std::exchange(m_filler, -1));
    setListenBacklogSize(backlog);
    if (!listen(m_address, m_port))
        return false;
    m_backlog = backlog;
    const int descriptor = static_cast<int>(socketDescriptor());
    setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    setsockopt(descriptor, IPPROTO_TCP, TCP_MAXSEG, &segment, sizeof segment);
    return true;
}

/// Takes the only place of a queue that nobody empties: who comes then gets no answer, as from a printer that is off.
void Door::fillQueue()
{
    if (m_filler >= 0)
        return;
    m_filler = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(m_port);
    place.sin_addr.s_addr = htonl(m_address.toIPv4Address());
    ::connect(m_filler, reinterpret_cast<const sockaddr *>(&place), sizeof place);
}

void Door::follow()
{
    if (m_port == 0)
        return;
    const int way = m_printer.knobs()[Knob::Connections];
    if (way == RefuseAll) {
        close();
        if (m_filler >= 0)
            closeWithReset(std::exchange(m_filler, -1));
        return;
    }
    if (!listenAgain(way == Unreachable ? 0 : usualBacklog)) {
        m_retry.start(); // another has the port just now
        return;
    }
    const bool closed = way == Unreachable || way == HoldAll;
    while (!m_held.isEmpty() && !closed && (m_open == 0 || way == ManyConnections))
        admit(m_held.takeFirst());
    if (closed || (way == OneWaits && m_open > 0))
        pauseAccepting();
    else
        resumeAccepting();
    if (way == Unreachable)
        fillQueue();
}

void Door::incomingConnection(qintptr descriptor)
{
    const int way = m_printer.knobs()[Knob::Connections];
    if ((way == OneRefuses && m_open > 0) || m_open + m_held.size() >= connectionsMost) {
        m_printer.journal().refused(QStringLiteral("%1-%2").arg(m_name).arg(++m_count));
        closeWithReset(static_cast<int>(descriptor));
    } else if (way == HoldAll || way == Unreachable || (way == OneWaits && m_open > 0)) {
        m_held.append(static_cast<int>(descriptor)); // several are accepted in one go
    } else {
        admit(static_cast<int>(descriptor));
    }
    follow();
}

void Door::admit(int descriptor)
{
    ++m_open;
    QObject *connection = m_opened(descriptor, QStringLiteral("%1-%2").arg(m_name).arg(++m_count));
    connect(connection, &QObject::destroyed, this, [this] {
        --m_open;
        follow();
    });
}

} // namespace zemrak::twin
