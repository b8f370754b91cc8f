#include "fuzz/records_schema.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QVariant>

#include <algorithm>
#include <cmath>

namespace zemrak::fuzz {

namespace {

template <bool (*type)(const QJsonValue &)> bool isOptional(const QJsonValue &value)
{
    return value.isUndefined() || value.isNull() || type(value);
}

template <const Schema &(*schema)()> bool isListOf(const QJsonValue &value)
{
    const QJsonArray array = value.toArray();
    return value.isArray()
        && std::all_of(array.begin(), array.end(), [](const QJsonValue &each) { return fits(each, schema()); });
}

bool isTexts(const QJsonValue &value)
{
    const QJsonArray array = value.toArray();
    return value.isArray() && std::all_of(array.begin(), array.end(), isText);
}

const Schema &siteSchema()
{
    static const Schema schema{{"id", isText}, {"origin", isText}, {"name", isText}, {"createdAt", isNumber}};
    return schema;
}

const Schema &jobSchema()
{
    static const Schema schema{{"id", isText}, {"printerName", isOptional<isText>}, {"kind", isText},
        {"status", isText}, {"errorCode", isOptional<isText>}, {"updatedAt", isNumber}};
    return schema;
}

const Schema &alertSchema()
{
    static const Schema schema{{"id", isText}, {"key", isText}, {"severity", isText}, {"title", isText},
        {"message", isText}, {"action", isOptional<isText>}, {"createdAt", isNumber}, {"lastAt", isNumber},
        {"count", isWhole}, {"read", isFlag}, {"resolvedAt", isOptional<isNumber>}};
    return schema;
}

const Schema &scannedSchema()
{
    static const Schema schema{{"id", isText}, {"name", isText}, {"state", isText}, {"reason", isOptional<isText>}};
    return schema;
}

const Schema &hostSchema()
{
    static const Schema schema{{"host", isText}, {"port", isWhole}};
    return schema;
}

const Schema &deviceSchema()
{
    static const Schema schema{{"vendor", isOptional<isText>}, {"product", isText}, {"uri", isText}};
    return schema;
}

const Schema &announcedSchema()
{
    static const Schema schema{{"name", isText}, {"host", isText}, {"port", isWhole}, {"transport", isText}};
    return schema;
}

} // namespace

bool isText(const QJsonValue &value)
{
    return value.isString();
}

bool isNumber(const QJsonValue &value)
{
    return value.isDouble();
}

bool isWhole(const QJsonValue &value)
{
    const QVariant number = value.toVariant(); // a 64-bit integer where the text was one
    if (!value.isDouble() || number.typeId() == QMetaType::LongLong)
        return value.isDouble();
    const double real = number.toDouble();
    return real == std::floor(real) && real >= -0x1p63 && real < 0x1p63;
}

bool isFlag(const QJsonValue &value)
{
    return value.isBool();
}

bool fits(const QJsonValue &value, const Schema &schema)
{
    const QJsonObject object = value.toObject();
    return value.isObject() && std::all_of(schema.cbegin(), schema.cend(), [&object](const Field &field) {
        return field.fits(object.value(QLatin1String(field.key)));
    });
}

const Schema &printerSchema()
{
    static const Schema schema{{"id", isText}, {"name", isText}, {"type", isText}, {"state", isText}};
    return schema;
}

const Schema &stateSchema()
{
    static const Schema schema{{"version", isText}, {"httpPort", isWhole}, {"httpsPort", isWhole}, {"tls", isFlag},
        {"printers", isListOf<printerSchema>}, {"pairedSites", isListOf<siteSchema>},
        {"recentJobs", isListOf<jobSchema>}, {"allowedOrigins", isTexts}, {"defaultOrigins", isTexts},
        {"autoApprovePairing", isFlag}, {"alertsUnread", isWhole}};
    return schema;
}

const Schema &alertsSchema()
{
    static const Schema schema{{"alerts", isListOf<alertSchema>}, {"unread", isWhole}};
    return schema;
}

const Schema &scanSchema()
{
    static const Schema schema{{"printers", isListOf<scannedSchema>}, {"connected", isWhole}};
    return schema;
}

const Schema &networkSchema()
{
    static const Schema schema{{"hosts", isListOf<hostSchema>}};
    return schema;
}

const Schema &usbSchema()
{
    static const Schema schema{{"devices", isListOf<deviceSchema>}};
    return schema;
}

const Schema &bonjourSchema()
{
    static const Schema schema{{"services", isListOf<announcedSchema>}};
    return schema;
}

} // namespace zemrak::fuzz
