#pragma once

#include <QJsonValue>
#include <QString>

#include <optional>

namespace zemrak {

/// One recent print job. An odd `waitingFor` or `confirmed` costs that field and not the whole state.
struct JobInfo
{
    QString id;
    std::optional<QString> printerName;
    QString kind;
    QString status;
    std::optional<QString> errorCode;
    std::optional<QString> waitingFor; ///< the service's code for what keeps it back
    std::optional<QString> confirmed; ///< "yes", "no", "unknown": whether the printer itself reported the end
    double updatedAt = 0; ///< time stamp, as the service sends it

    [[nodiscard]] static std::optional<JobInfo> decode(const QJsonValue &value);
    bool operator==(const JobInfo &) const = default;
};

} // namespace zemrak
