#pragma once

#include <QJsonValue>
#include <QList>
#include <QString>

#include <optional>

namespace zemrak {

/// A host of the local network that may be a printer.
struct NetHost
{
    QString host;
    qint64 port = 0;

    [[nodiscard]] static std::optional<NetHost> decode(const QJsonValue &value);
    bool operator==(const NetHost &) const = default;
};

/// The hits of a network scan.
struct NetResult
{
    QList<NetHost> hosts;
    QString message; ///< why nothing could be searched, in Arabic; empty: it could

    [[nodiscard]] static std::optional<NetResult> decode(const QJsonValue &value);
    bool operator==(const NetResult &) const = default;
};

/// A printer on the USB bus.
struct UsbDevice
{
    std::optional<QString> vendor;
    QString product;
    QString uri; ///< device address

    [[nodiscard]] static std::optional<UsbDevice> decode(const QJsonValue &value);
    bool operator==(const UsbDevice &) const = default;
};

/// The hits of a USB search.
struct UsbResult
{
    QList<UsbDevice> devices;
    QString message; ///< as NetResult::message

    [[nodiscard]] static std::optional<UsbResult> decode(const QJsonValue &value);
    bool operator==(const UsbResult &) const = default;
};

/// A printer that announces itself on the local network.
struct BonjourService
{
    QString name;
    QString host;
    qint64 port = 0;
    QString transport;

    [[nodiscard]] static std::optional<BonjourService> decode(const QJsonValue &value);
    bool operator==(const BonjourService &) const = default;
};

/// The hits of a Bonjour search.
struct BonjourResult
{
    QList<BonjourService> services;
    QString message; ///< as NetResult::message

    [[nodiscard]] static std::optional<BonjourResult> decode(const QJsonValue &value);
    bool operator==(const BonjourResult &) const = default;
};

} // namespace zemrak
