#pragma once

#include <QJsonValue>
#include <QList>
#include <QString>

#include <optional>

namespace zemrak {

/// Something that needs, or needed, the attention of the person. Times are milliseconds since 1970-01-01 UTC.
struct AlertItem
{
    QString id; ///< unique per occurrence
    QString key; ///< what it is about, the same for every occurrence
    QString severity;
    QString title;
    QString message;
    std::optional<QString> action;
    double createdAt = 0;
    double lastAt = 0;
    qint64 count = 0; ///< occurrences folded into this alert
    bool read = false;
    std::optional<double> resolvedAt; ///< none while the problem lasts

    [[nodiscard]] static std::optional<AlertItem> decode(const QJsonValue &value);
    bool operator==(const AlertItem &) const = default;
};

/// The service's list of alerts, with its own count of unread ones.
struct AlertsResult
{
    QList<AlertItem> alerts;
    qint64 unread = 0;

    [[nodiscard]] static std::optional<AlertsResult> decode(const QJsonValue &value);
    bool operator==(const AlertsResult &) const = default;
};

} // namespace zemrak
