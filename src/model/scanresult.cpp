#include "model/scanresult.h"

#include "model/fieldreader.h"

namespace zemrak {

std::optional<ScanPrinter> ScanPrinter::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    ScanPrinter record{
        .id = fields.text(QLatin1String("id")),
        .name = fields.text(QLatin1String("name")),
        .state = fields.text(QLatin1String("state")),
        .reason = fields.optionalText(QLatin1String("reason")),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<ScanResult> ScanResult::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    ScanResult record{
        .printers = fields.records<ScanPrinter>(QLatin1String("printers")),
        .connected = fields.integer(QLatin1String("connected")),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace zemrak
