#include "model/printerinfo.h"

#include "model/fieldreader.h"

namespace zemrak {

std::optional<PrinterInfo> PrinterInfo::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    PrinterInfo record{
        .id = fields.text(QLatin1String("id")),
        .name = fields.text(QLatin1String("name")),
        .type = fields.text(QLatin1String("type")),
        .state = fields.text(QLatin1String("state")),
        .reason = toText(value[QLatin1String("reason")]),
        .problem = toText(value[QLatin1String("problem")]),
        .paper = toText(value[QLatin1String("paper")]),
        .cover = toText(value[QLatin1String("cover")]),
        .protocolName = toText(value[QLatin1String("protocol")]),
        .profile = Profile::decode(value[QLatin1String("profile")]),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace zemrak
