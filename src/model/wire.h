#pragma once

#include <QByteArray>
#include <QJsonObject>

#include <optional>

namespace zemrak {

/// The JSON object a body holds; none when the body is no JSON, is cut off, is not UTF-8, nests too deeply for the
/// parser (1,024 levels) or holds something else than an object. Of a key that stands twice one value is kept.
[[nodiscard]] std::optional<QJsonObject> parseObject(const QByteArray &body);

/// A whole response body as one record; none when it is no JSON object or the record does not decode.
template <typename Record> [[nodiscard]] std::optional<Record> decodeBody(const QByteArray &body)
{
    const std::optional<QJsonObject> object = parseObject(body);
    return object ? Record::decode(*object) : std::nullopt;
}

} // namespace zemrak
