#include "app/onceonlybody.h"

#include <algorithm>
#include <cstring>

namespace zemrak {

OnceOnlyBody::OnceOnlyBody(QByteArray bytes, QObject *parent)
    : QIODevice(parent)
    , m_bytes(std::move(bytes))
{
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 OnceOnlyBody::bytesAvailable() const
{
    return m_bytes.size() - m_position + QIODevice::bytesAvailable();
}

qint64 OnceOnlyBody::readData(char *data, qint64 maxSize)
{
    const qint64 size = std::min<qint64>(maxSize, m_bytes.size() - m_position);
    if (size == 0 && maxSize > 0)
        return -1;
    std::memcpy(data, m_bytes.constData() + m_position, static_cast<size_t>(size));
    m_position += size;
    return size;
}

} // namespace zemrak
