#include "model/fieldreader.h"

namespace zemrak {

std::optional<QString> toText(const QJsonValue &value)
{
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<qint64> toInteger(const QJsonValue &value)
{
    // toInteger() answers with its default for anything that is no whole 64-bit number, so two defaults tell a real
    // answer from the default without going through a double, which would lose digits beyond 2^53.
    const qint64 whole = value.toInteger(0);
    if (!value.isDouble() || (whole == 0 && value.toInteger(1) != 0))
        return std::nullopt;
    return whole;
}

std::optional<double> toNumber(const QJsonValue &value)
{
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

std::optional<bool> toBoolean(const QJsonValue &value)
{
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

FieldReader::FieldReader(const QJsonValue &value)
    : m_object(value.toObject())
    , m_ok(value.isObject())
{
}

QList<QString> FieldReader::texts(QLatin1String key)
{
    return elements<QString>(key, toText);
}

} // namespace zemrak
