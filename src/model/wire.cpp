#include "model/wire.h"

#include <QJsonDocument>

namespace zemrak {

std::optional<QJsonObject> parseObject(const QByteArray &body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

} // namespace zemrak
