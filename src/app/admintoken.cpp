#include "app/admintoken.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>

namespace zemrak {

namespace {

constexpr qint64 longest = 4096;

bool isUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    [[maybe_unused]] const QString text = decoder.decode(bytes);
    return !decoder.hasError();
}

} // namespace

std::optional<QByteArray> readAdminToken(const QString &fileName)
{
    QFile file(fileName);
    // A pipe in its place would block the main thread.
    if (!QFileInfo(fileName).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return std::nullopt;
    QByteArray token = file.read(longest + 1);
    if (token.size() > longest || !isUtf8(token))
        return std::nullopt;
    if (token.endsWith('\n'))
        token.chop(token.endsWith("\r\n") ? 2 : 1);
    if (std::any_of(token.cbegin(), token.cend(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }))
        return std::nullopt;
    return token;
}

} // namespace zemrak
