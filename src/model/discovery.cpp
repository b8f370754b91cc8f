#include "model/discovery.h"

#include "model/fieldreader.h"

namespace zemrak {

namespace {

// Of a search that could not be made; one that is odd counts as none.
QString hindrance(const QJsonValue &result)
{
    return toText(result[QLatin1String("message")]).value_or(QString());
}

} // namespace

std::optional<NetHost> NetHost::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    NetHost record{
        .host = fields.text(QLatin1String("host")),
        .port = fields.integer(QLatin1String("port")),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<NetResult> NetResult::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    NetResult record{
        .hosts = fields.records<NetHost>(QLatin1String("hosts")),
        .message = hindrance(value),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<UsbDevice> UsbDevice::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    UsbDevice record{
        .vendor = fields.optionalText(QLatin1String("vendor")),
        .product = fields.text(QLatin1String("product")),
        .uri = fields.text(QLatin1String("uri")),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<UsbResult> UsbResult::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    UsbResult record{
        .devices = fields.records<UsbDevice>(QLatin1String("devices")),
        .message = hindrance(value),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<BonjourService> BonjourService::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    BonjourService record{
        .name = fields.text(QLatin1String("name")),
        .host = fields.text(QLatin1String("host")),
        .port = fields.integer(QLatin1String("port")),
        .transport = fields.text(QLatin1String("transport")),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<BonjourResult> BonjourResult::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    BonjourResult record{
        .services = fields.records<BonjourService>(QLatin1String("services")),
        .message = hindrance(value),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace zemrak
