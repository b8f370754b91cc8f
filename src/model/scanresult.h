#pragma once

#include <QJsonValue>
#include <QList>
#include <QString>

#include <optional>

namespace zemrak {

/// What a connection check found out about one printer.
struct ScanPrinter
{
    QString id;
    QString name;
    QString state;
    std::optional<QString> reason;

    [[nodiscard]] static std::optional<ScanPrinter> decode(const QJsonValue &value);
    bool operator==(const ScanPrinter &) const = default;
};

/// The outcome of a connection check.
struct ScanResult
{
    QList<ScanPrinter> printers;
    qint64 connected = 0; ///< number of connected printers

    [[nodiscard]] static std::optional<ScanResult> decode(const QJsonValue &value);
    bool operator==(const ScanResult &) const = default;
};

} // namespace zemrak
