#pragma once

#include <QByteArray>
#include <QIODevice>

namespace zemrak {

/// A request body that can be read through once. The network layer repeats a request on its own when a connection
/// closes before an answer; with a body that cannot be rewound it fails instead, so that nothing is printed twice.
class OnceOnlyBody final : public QIODevice
{
public:
    explicit OnceOnlyBody(QByteArray bytes, QObject *parent = nullptr);

    [[nodiscard]] bool isSequential() const override { return true; }
    [[nodiscard]] qint64 bytesAvailable() const override;
    [[nodiscard]] bool atEnd() const override { return m_position == m_bytes.size(); }
    bool seek(qint64) override { return false; }

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_position = 0;
};

} // namespace zemrak
