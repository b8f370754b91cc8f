#include "textrender/framechannel.h"

#include <QtEndian>

namespace zemrak {

FrameChannel::FrameChannel(QFile *in, QFile *out)
    : m_in(in)
    , m_out(out)
{
}

std::optional<QByteArray> FrameChannel::read()
{
    const QByteArray header = readExactly(sizeof(quint32));
    if (header.size() != sizeof(quint32)) {
        m_end = header.isEmpty() ? End::Clean : End::Broken;
        return std::nullopt;
    }
    const auto length = qFromBigEndian<quint32>(header.constData());
    if (length > maximumRequest) {
        m_end = End::TooLarge;
        return std::nullopt;
    }
    const QByteArray message = readExactly(length);
    if (message.size() == length)
        return message;
    m_end = End::Broken;
    return std::nullopt;
}

bool FrameChannel::write(const QByteArray &message)
{
    QByteArray header(sizeof(quint32), Qt::Uninitialized);
    qToBigEndian(static_cast<quint32>(message.size()), header.data());
    return m_out->write(header) == header.size() && m_out->write(message) == message.size() && m_out->flush();
}

QByteArray FrameChannel::readExactly(qint64 length)
{
    QByteArray bytes;
    while (bytes.size() < length) {
        const QByteArray more = m_in->read(length - bytes.size());
        if (more.isEmpty())
            break;
        bytes += more;
    }
    return bytes;
}

} // namespace zemrak
