#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <span>

namespace zemrak::paper {

/// How many bytes belong to a command after its prefix, from those that have come; -1 when more must come to know.
using LengthOf = qint64 (*)(QByteArrayView after);

/// Lengths that many commands share.
namespace length {
template <int n> qint64 fixed(QByteArrayView)
{
    return n;
}
/// `skip` bytes, a number of two bytes, the lower first, and as many bytes.
template <int skip> qint64 counted(QByteArrayView after)
{
    return after.size() < skip + 2
        ? -1
        : skip + 2 + static_cast<uchar>(after[skip]) + 256 * static_cast<uchar>(after[skip + 1]);
}
/// Up to a byte of the value `end`, which belongs to it; `most` bytes at most.
template <char end, int most> qint64 until(QByteArrayView after)
{
    const qsizetype place = after.indexOf(end);
    return place >= 0 && place < most ? place + 1 : after.size() >= most ? most : -1;
}
} // namespace length

/// Takes a stream of bytes apart into commands and runs of text, however the stream is cut into pieces. The languages
/// derive from it.
class CommandReader
{
public:
    virtual ~CommandReader() = default;
    void take(QByteArrayView bytes);
    /// No more will come: a command that is not whole is reported and dropped.
    void end();
    /// Bytes that wait for the rest of their command.
    [[nodiscard]] qsizetype waiting() const { return m_pending.size(); }

protected:
    struct Command
    {
        QByteArrayView prefix;
        LengthOf length;
        int id;
    };

    /// The language's commands. A longer prefix is looked for before a shorter one.
    [[nodiscard]] virtual std::span<const Command> commands() const = 0;
    /// Called for every command in its order. `offset` counts from the first byte ever taken.
    virtual void run(int id, QByteArrayView parameters, qint64 offset) = 0;
    /// Bytes from 0x20 on that begin no command.
    virtual void text(QByteArrayView bytes, qint64 offset) = 0;
    virtual void problem(qint64 offset, QByteArrayView bytes, const QString &what) = 0;
    /// Right after what the bytes meant has been done.
    virtual void done(QByteArrayView bytes) = 0;
    /// Whether bytes may begin a command now.
    [[nodiscard]] virtual bool isText(uchar byte) const { return byte >= 0x20 && byte != 0x7f; }

private:
    [[nodiscard]] qsizetype step(QByteArrayView rest);
    [[nodiscard]] qsizetype unknown(QByteArrayView rest);

    QByteArray m_pending;
    qint64 m_offset = 0; ///< of the pending bytes
    qint64 m_skip = 0; ///< bytes still to come of a command too long to be kept
    qint64 m_need = 0; ///< pending bytes before which looking again is no use
};

} // namespace zemrak::paper
