#pragma once

#include <QJsonValue>
#include <QString>

#include <optional>

namespace zemrak {

/// One recent print job.
struct JobInfo
{
    QString id;
    std::optional<QString> printerName;
    QString kind;
    QString status;
    std::optional<QString> errorCode;
    double updatedAt = 0; ///< time stamp, as the service sends it

    [[nodiscard]] static std::optional<JobInfo> decode(const QJsonValue &value);
    bool operator==(const JobInfo &) const = default;
};

} // namespace zemrak
