#include "model/pairedsite.h"

#include "model/fieldreader.h"

namespace zemrak {

std::optional<PairedSite> PairedSite::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    PairedSite record{
        .id = fields.text(QLatin1String("id")),
        .origin = fields.text(QLatin1String("origin")),
        .name = fields.text(QLatin1String("name")),
        .createdAt = fields.number(QLatin1String("createdAt")),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace zemrak
