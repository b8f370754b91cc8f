#include "twin/printer/line.h"

namespace zemrak::twin {

Line::Line(const QString &name, bool star, QObject *parent)
    : QObject(parent)
    , m_name(name)
    , m_star(star)
    , m_scanner(star)
{
}

void Line::receive(QByteArrayView bytes)
{
    m_received += bytes.size();
    m_room -= std::min(m_room, bytes.size());
    m_waiting.append(bytes);
    const QList<RealTimeCommand> commands = m_scanner.take(bytes);
    for (const RealTimeCommand &command : commands)
        Q_EMIT realTime(command);
    dropQuestions();
    Q_EMIT arrived(bytes.size());
}

void Line::dropQuestions()
{
    const QByteArrayView question = m_star ? QByteArrayView("\x1b\x06\x01") : QByteArrayView("\x10\x04");
    while (m_onlyAsks && !m_waiting.isEmpty()) {
        if (m_waiting.size() >= 3 && m_waiting.startsWith(question))
            m_waiting.remove(0, 3);
        else if (m_waiting.size() < 3 && (question.startsWith(m_waiting) || m_waiting.startsWith(question)))
            return;
        else
            m_onlyAsks = false;
    }
}

void Line::end(bool lost)
{
    if (m_ended)
        return;
    m_ended = true;
    Q_EMIT ended(lost);
}

void Line::setRoom(qsizetype room)
{
    const bool opens = room > m_room;
    m_room = room;
    if (opens)
        Q_EMIT roomChanged();
}

} // namespace zemrak::twin
