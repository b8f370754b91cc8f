#pragma once

#include <QJsonValue>

#include <vector>

namespace zemrak::fuzz {

/// What one key of a record must hold. Written down a second time, apart from the decoders, to compare them with.
struct Field
{
    const char *key;
    bool (*fits)(const QJsonValue &value); ///< called with undefined for a key that is missing
};
using Schema = std::vector<Field>;

[[nodiscard]] bool isText(const QJsonValue &value);
[[nodiscard]] bool isNumber(const QJsonValue &value);
[[nodiscard]] bool isWhole(const QJsonValue &value);
[[nodiscard]] bool isFlag(const QJsonValue &value);
/// `value` is an object, and each of the keys fits.
[[nodiscard]] bool fits(const QJsonValue &value, const Schema &schema);

[[nodiscard]] const Schema &stateSchema();
[[nodiscard]] const Schema &alertsSchema();
[[nodiscard]] const Schema &scanSchema();
[[nodiscard]] const Schema &networkSchema();
[[nodiscard]] const Schema &usbSchema();
[[nodiscard]] const Schema &bonjourSchema();
[[nodiscard]] const Schema &printerSchema();

} // namespace zemrak::fuzz
