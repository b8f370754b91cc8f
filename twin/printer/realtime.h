#pragma once

#include <QByteArray>
#include <QList>

namespace zemrak::twin {

/// A command that a printer obeys when it arrives, wherever in the stream it stands, even within another's data.
struct RealTimeCommand
{
    enum class Kind
    {
        Status,
        Recover,
        Pulse,
        Clear,
        StarStatus,
        StarReset
    } kind
        = Kind::Status;
    int n = 0; ///< its parameter
    int time = 0; ///< of Pulse, in units of 100 ms
};

/// Finds them in a stream, however it is cut into pieces. Facts: ESC/POS command reference (DLE EOT, DLE ENQ, DLE DC4);
/// Star Line Mode command reference (ESC ACK SOH, ESC ACK CAN).
class RealTimeScanner
{
public:
    explicit RealTimeScanner(bool star)
        : m_star(star)
    {
    }
    [[nodiscard]] QList<RealTimeCommand> take(QByteArrayView bytes);

private:
    [[nodiscard]] bool matches(RealTimeCommand *command) const;

    bool m_star;
    QByteArray m_last; ///< as many bytes as the longest such command has
};

} // namespace zemrak::twin
