#include "support/recordschema.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QVariant>

#include <algorithm>
#include <cmath>

namespace zemrak::test {

namespace {

// Each key with its type: text, number, whole, flag, a record, or [a list of those]. "?": it may be null or missing.
const QHash<QByteArray, QByteArrayList> &schemas()
{
    static const QHash<QByteArray, QByteArrayList> all = [] {
        QHash<QByteArray, QByteArrayList> split;
        for (const auto &[record, keys] : {
                 std::pair("printer", "id:text name:text type:text state:text"),
                 std::pair("site", "id:text origin:text name:text createdAt:number"),
                 std::pair("job", "id:text printerName:text? kind:text status:text errorCode:text? updatedAt:number"),
                 std::pair("state",
                     "version:text httpPort:whole httpsPort:whole tls:flag printers:[printer] pairedSites:[site] "
                     "recentJobs:[job] allowedOrigins:[text] defaultOrigins:[text] autoApprovePairing:flag "
                     "alertsUnread:whole"),
                 std::pair("alert",
                     "id:text key:text severity:text title:text message:text action:text? createdAt:number "
                     "lastAt:number count:whole read:flag resolvedAt:number?"),
                 std::pair("alerts", "alerts:[alert] unread:whole"),
                 std::pair("scanned", "id:text name:text state:text reason:text?"),
                 std::pair("scan", "printers:[scanned] connected:whole"),
                 std::pair("host", "host:text port:whole"),
                 std::pair("network", "hosts:[host]"),
                 std::pair("device", "vendor:text? product:text uri:text"),
                 std::pair("usb", "devices:[device]"),
                 std::pair("announced", "name:text host:text port:whole transport:text"),
                 std::pair("bonjour", "services:[announced]"),
             })
            split.insert(record, QByteArray(keys).split(' '));
        return split;
    }();
    return all;
}

bool holds(const QJsonValue &value, const QByteArray &type)
{
    if (type.endsWith('?'))
        return value.isUndefined() || value.isNull() || holds(value, type.chopped(1));
    if (type.startsWith('[')) {
        const QJsonArray array = value.toArray();
        const QByteArray each = type.sliced(1, type.size() - 2);
        return value.isArray()
            && std::all_of(array.begin(), array.end(), [&each](const QJsonValue &one) { return holds(one, each); });
    }
    if (type == "text")
        return value.isString();
    if (type == "number")
        return value.isDouble();
    if (type == "flag")
        return value.isBool();
    return type == "whole" ? isWhole(value) : fits(value, type);
}

} // namespace

QByteArrayList keysOf(const QByteArray &record)
{
    QByteArrayList keys;
    for (const QByteArray &field : schemas().value(record))
        keys.append(field.left(field.indexOf(':')));
    return keys;
}

bool fits(const QJsonValue &value, const QByteArray &record)
{
    const QByteArrayList &fields = schemas().constFind(record).value();
    return value.isObject() && std::all_of(fields.cbegin(), fields.cend(), [&value](const QByteArray &field) {
        const qsizetype colon = field.indexOf(':');
        return holds(value[QLatin1String(field.left(colon))], field.mid(colon + 1));
    });
}

bool isWhole(const QJsonValue &value)
{
    const QVariant number = value.toVariant(); // a 64-bit integer where the text was one
    if (!value.isDouble() || number.typeId() == QMetaType::LongLong)
        return value.isDouble();
    const double real = number.toDouble();
    return real == std::floor(real) && real >= -0x1p63 && real < 0x1p63;
}

} // namespace zemrak::test
