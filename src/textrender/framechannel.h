#pragma once

#include <QByteArray>
#include <QFile>

#include <optional>

namespace zemrak {

/// Messages over a pair of files or pipes, each behind its length in four bytes, the largest first. Blocks.
class FrameChannel
{
public:
    static constexpr quint32 maximumRequest = 64 * 1024;

    enum class End
    {
        NotYet,
        Clean, ///< no message had begun
        Broken, ///< in the middle of a message
        TooLarge ///< a message longer than maximumRequest was announced
    };

    FrameChannel(QFile *in, QFile *out);

    /// The next message; none once the input has ended.
    [[nodiscard]] std::optional<QByteArray> read();
    [[nodiscard]] End end() const { return m_end; }

    /// @returns whether the reader at the other end took it
    [[nodiscard]] bool write(const QByteArray &message);

private:
    [[nodiscard]] QByteArray readExactly(qint64 length);

    QFile *m_in;
    QFile *m_out;
    End m_end = End::NotYet;
};

} // namespace zemrak
