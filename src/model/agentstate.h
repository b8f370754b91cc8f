#pragma once

#include "model/jobinfo.h"
#include "model/pairedsite.h"
#include "model/printerinfo.h"

#include <QJsonValue>
#include <QList>
#include <QString>

#include <optional>

namespace zemrak {

/// A site that wanted to print and is not on the list.
struct AskedOrigin
{
    QString origin;
    double askedAt = 0; ///< milliseconds since 1970-01-01 UTC

    bool operator==(const AskedOrigin &) const = default;
};

/// The service's whole state at one moment. Every key but the last is required on purpose: a service that leaves one
/// out is shown as unreachable rather than half understood.
struct AgentState
{
    QString version;
    qint64 httpPort = 0; ///< also the port of the admin channel
    qint64 httpsPort = 0;
    bool tls = false; ///< the HTTPS listener is up
    QList<PrinterInfo> printers;
    QList<PairedSite> pairedSites;
    QList<JobInfo> recentJobs; ///< in the service's order
    QList<QString> allowedOrigins; ///< added and built-in ones
    QList<QString> defaultOrigins; ///< the built-in ones
    bool autoApprovePairing = false;
    qint64 alertsUnread = 0;
    QList<AskedOrigin> askedOrigins; ///< newest first; what is odd among them is left out

    [[nodiscard]] static std::optional<AgentState> decode(const QJsonValue &value);
    bool operator==(const AgentState &) const = default;
};

} // namespace zemrak
