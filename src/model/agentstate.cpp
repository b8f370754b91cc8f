#include "model/agentstate.h"

#include "model/fieldreader.h"

namespace zemrak {

namespace {

QList<AskedOrigin> decodeAsked(const QJsonValue &value)
{
    QList<AskedOrigin> asked;
    const QJsonArray entries = value.toArray();
    for (const QJsonValue &entry : entries) {
        FieldReader fields(entry);
        const AskedOrigin site{fields.text(QLatin1String("origin")), fields.number(QLatin1String("askedAt"))};
        if (fields.ok())
            asked.append(site);
    }
    return asked;
}

} // namespace

std::optional<AgentState> AgentState::decode(const QJsonValue &value)
{
    FieldReader fields(value);
    AgentState record{
        .version = fields.text(QLatin1String("version")),
        .httpPort = fields.integer(QLatin1String("httpPort")),
        .httpsPort = fields.integer(QLatin1String("httpsPort")),
        .tls = fields.boolean(QLatin1String("tls")),
        .printers = fields.records<PrinterInfo>(QLatin1String("printers")),
        .pairedSites = fields.records<PairedSite>(QLatin1String("pairedSites")),
        .recentJobs = fields.records<JobInfo>(QLatin1String("recentJobs")),
        .allowedOrigins = fields.texts(QLatin1String("allowedOrigins")),
        .defaultOrigins = fields.texts(QLatin1String("defaultOrigins")),
        .autoApprovePairing = fields.boolean(QLatin1String("autoApprovePairing")),
        .alertsUnread = fields.integer(QLatin1String("alertsUnread")),
        .askedOrigins = decodeAsked(value[QLatin1String("askedOrigins")]),
    };
    return fields.ok() ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace zemrak
