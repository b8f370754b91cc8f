#include "twin/paper/commandreader.h"

#include "twin/paper/receipt.h"

#include <algorithm>

namespace zemrak::paper {

namespace {

constexpr qsizetype wait = 0;
// What opens a command of more than one byte: DLE, ESC, FS, GS.
constexpr QByteArrayView openers("\x10\x1b\x1c\x1d");

} // namespace

void CommandReader::take(QByteArrayView bytes)
{
    const qsizetype skipped = std::min<qint64>(m_skip, bytes.size());
    if (skipped > 0) {
        m_skip -= skipped;
        m_offset += skipped;
        done(bytes.first(skipped));
        bytes = bytes.sliced(skipped);
    }
    m_pending.append(bytes);
    if (m_pending.size() < m_need)
        return;
    m_need = 0;
    qsizetype place = 0;
    while (place < m_pending.size()) {
        const QByteArrayView rest = QByteArrayView(m_pending).sliced(place);
        const qsizetype used = step(rest);
        if (used == wait)
            break;
        done(rest.first(used));
        place += used;
        m_offset += used;
    }
    m_pending.remove(0, place);
}

qsizetype CommandReader::step(QByteArrayView rest)
{
    const auto first = static_cast<uchar>(rest.front());
    if (isText(first)) {
        const auto *end = std::find_if_not(
            rest.begin(), rest.end(), [this](char byte) { return isText(static_cast<uchar>(byte)); });
        text(rest.first(end - rest.begin()), m_offset);
        return end - rest.begin();
    }
    const Command *found = nullptr;
    bool mayGrow = false;
    for (const Command &command : commands()) {
        if (rest.startsWith(command.prefix)) {
            if (found == nullptr || command.prefix.size() > found->prefix.size())
                found = &command;
        } else if (command.prefix.startsWith(rest)) {
            mayGrow = true;
        }
    }
    if (mayGrow)
        return wait;
    if (found == nullptr)
        return unknown(rest);
    const QByteArrayView after = rest.sliced(found->prefix.size());
    const qint64 size = found->length(after);
    if (size < 0)
        return wait;
    if (size > limits::commandBytes) {
        problem(m_offset, rest, QStringLiteral("a command of %1 bytes is longer than the printer's memory").arg(size));
        const qint64 whole = found->prefix.size() + size;
        const qsizetype here = std::min<qint64>(whole, rest.size());
        m_skip = whole - here;
        return here;
    }
    if (after.size() < size) {
        m_need = found->prefix.size() + size;
        return wait;
    }
    run(found->id, after.first(size), m_offset);
    return found->prefix.size() + size;
}

qsizetype CommandReader::unknown(QByteArrayView rest)
{
    const bool opens = openers.contains(rest.front());
    if (opens && rest.size() < 2)
        return wait;
    const qsizetype size = opens ? 2 : 1;
    problem(m_offset, rest.first(size), opens ? QStringLiteral("unknown command") : QStringLiteral("unknown byte"));
    return size;
}

void CommandReader::end()
{
    if (!m_pending.isEmpty() || m_skip > 0) {
        problem(m_offset, m_pending, QStringLiteral("the data ended within a command"));
        done(m_pending);
    }
    m_offset += m_pending.size();
    m_pending.clear();
    m_skip = 0;
    m_need = 0;
}

} // namespace zemrak::paper
