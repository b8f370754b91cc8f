#include "model/alertitem.h"

#include "model/fieldreader.h"

namespace zemrak {

std::optional<AlertItem> AlertItem::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    AlertItem record{
        .id = fields.text(QLatin1String("id")),
        .key = fields.text(QLatin1String("key")),
        .severity = fields.text(QLatin1String("severity")),
        .title = fields.text(QLatin1String("title")),
        .message = fields.text(QLatin1String("message")),
        .action = fields.optionalText(QLatin1String("action")),
        .createdAt = fields.number(QLatin1String("createdAt")),
        .lastAt = fields.number(QLatin1String("lastAt")),
        .count = fields.integer(QLatin1String("count")),
        .read = fields.boolean(QLatin1String("read")),
        .resolvedAt = fields.optionalNumber(QLatin1String("resolvedAt")),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<AlertsResult> AlertsResult::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    AlertsResult record{
        .alerts = fields.records<AlertItem>(QLatin1String("alerts")),
        .unread = fields.integer(QLatin1String("unread")),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace zemrak
