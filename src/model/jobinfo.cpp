#include "model/jobinfo.h"

#include "model/fieldreader.h"

namespace zemrak {

std::optional<JobInfo> JobInfo::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    JobInfo record{
        .id = fields.text(QLatin1String("id")),
        .printerName = fields.optionalText(QLatin1String("printerName")),
        .kind = fields.text(QLatin1String("kind")),
        .status = fields.text(QLatin1String("status")),
        .errorCode = fields.optionalText(QLatin1String("errorCode")),
        .waitingFor = toText(value[QLatin1String("waitingFor")]),
        .confirmed = toText(value[QLatin1String("confirmed")]),
        .updatedAt = fields.number(QLatin1String("updatedAt")),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace zemrak
