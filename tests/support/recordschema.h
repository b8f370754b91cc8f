#pragma once

#include <QByteArrayList>
#include <QJsonValue>

namespace zemrak::test {

/// The keys that a record of the wire must have, written down apart from the decoders, to compare them with. Records:
/// printer, site, job, state, alert, alerts, scanned, scan, host, network, device, usb, announced, bonjour.
[[nodiscard]] QByteArrayList keysOf(const QByteArray &record);
/// `value` is an object, and each of those keys holds what it must.
[[nodiscard]] bool fits(const QJsonValue &value, const QByteArray &record);
/// A number without a fraction that 64 bits can hold.
[[nodiscard]] bool isWhole(const QJsonValue &value);

} // namespace zemrak::test
