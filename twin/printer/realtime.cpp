#include "twin/printer/realtime.h"

namespace zemrak::twin {

namespace {

constexpr qsizetype longest = 10;
constexpr QByteArrayView clearBuffers("\x10\x14\x08\x01\x03\x14\x01\x06\x02\x08");

} // namespace

QList<RealTimeCommand> RealTimeScanner::take(QByteArrayView bytes)
{
    QList<RealTimeCommand> found;
    for (const char byte : bytes) {
        m_last.append(byte);
        if (m_last.size() > longest)
            m_last.remove(0, 1);
        RealTimeCommand command;
        if (matches(&command)) {
            found.append(command);
            m_last.clear();
        }
    }
    return found;
}

bool RealTimeScanner::matches(RealTimeCommand *command) const
{
    using Kind = RealTimeCommand::Kind;
    const QByteArrayView last(m_last);
    const auto tail = [last](qsizetype size) { return last.size() >= size ? last.last(size) : QByteArrayView(); };
    const QByteArrayView three = tail(3);
    if (m_star) {
        if (three == QByteArrayView("\x1b\x06\x01"))
            command->kind = Kind::StarStatus;
        else if (three == QByteArrayView("\x1b\x06\x18"))
            command->kind = Kind::StarReset;
        else
            return false;
        return true;
    }
    const QByteArrayView five = tail(5);
    if (three.startsWith("\x10\x04") && three[2] >= 1 && three[2] <= 4) {
        *command = {Kind::Status, three[2]};
    } else if (three.startsWith("\x10\x05") && (three[2] == 1 || three[2] == 2)) {
        *command = {Kind::Recover, three[2]};
    } else if (five.startsWith("\x10\x14\x01") && (five[3] == 0 || five[3] == 1) && five[4] >= 1 && five[4] <= 8) {
        *command = {Kind::Pulse, five[3], five[4]};
    } else if (tail(longest) == clearBuffers) {
        command->kind = Kind::Clear;
    } else {
        return false;
    }
    return true;
}

} // namespace zemrak::twin
