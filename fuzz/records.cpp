// Whatever body the service sends: each record either decodes as its keys say, or is refused.

#include "fuzz/records_shown.h"
#include "fuzz/require.h"
#include "model/agentstate.h"
#include "model/alertitem.h"
#include "model/discovery.h"
#include "model/scanresult.h"
#include "model/wire.h"
#include "support/recordschema.h"

#include <QJsonArray>
#include <QJsonObject>

#include <cstdint>

using namespace zemrak;
using namespace zemrak::fuzz;
using namespace zemrak::test;

namespace {

// The record, after everything that holds of every record has been checked.
template <typename Record> std::optional<Record> decoded(const QByteArray &body, const char *schema)
{
    std::optional<Record> record = decodeBody<Record>(body);
    require(record == decodeBody<Record>(body), "decoding twice gives the same");
    const std::optional<QJsonObject> object = parseObject(body);
    require(record.has_value() == (object && fits(*object, schema)), "a record decodes exactly when its keys fit");
    if (!record)
        return record;

    QJsonObject later = *object;
    later.insert(QStringLiteral("aKeyOfALaterVersion"), *object);
    require(Record::decode(later) == record, "a key of a later version changes nothing");
    for (const QByteArray &key : keysOf(schema)) {
        QJsonObject without = *object;
        without.remove(QLatin1String(key));
        require(Record::decode(without).has_value() == fits(without, schema), "a required key is required");
    }
    return record;
}

void checkWhole(qint64 number, const QJsonValue &value)
{
    require(value.isDouble() && value.toInteger() == number, "a whole number keeps all its digits");
}

void checkProfile(const QJsonValue &value)
{
    const std::optional<Profile> profile = Profile::decode(value);
    require(profile.has_value() == value.isObject(), "every object is a profile, and nothing else is");
    if (!profile)
        return;
    require(profile == Profile::decode(value), "decoding twice gives the same");
    require(profile->dots.has_value() == isWhole(value[QLatin1String("dots")]), "dots are a whole number");
    if (profile->dots)
        checkWhole(*profile->dots, value[QLatin1String("dots")]);
    const QJsonValue pin = value[QLatin1String("drawerPin")];
    if (isWhole(pin))
        require(profile->drawerPin == QString::number(pin.toInteger()), "a pin in digits is that number");
    else
        require(profile->drawerPin == pin.toString(QStringLiteral("2")), "a pin is text, or 2");
    require(profile->codepageEscT.has_value() == isWhole(value[QLatin1String("codepage")][QLatin1String("escT")]),
        "a code page's number is a whole number");
}

void checkPrinter(const QJsonValue &value)
{
    checkProfile(value[QLatin1String("profile")]);
    const std::optional<PrinterInfo> printer = PrinterInfo::decode(value);
    require(printer.has_value() == fits(value, "printer"), "a printer decodes exactly when its keys fit");
    if (!printer)
        return;
    require(printer->reason.has_value() == value[QLatin1String("reason")].isString(), "an odd reason costs that field");
    require(printer->profile == Profile::decode(value[QLatin1String("profile")]), "a profile is the profile's own");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray body(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QJsonObject object = parseObject(body).value_or(QJsonObject());
    checkProfile(object);
    checkPrinter(object);
    if (const auto state = decoded<AgentState>(body, "state")) {
        checkWhole(state->httpPort, object.value(QLatin1String("httpPort")));
        checkWhole(state->alertsUnread, object.value(QLatin1String("alertsUnread")));
        for (const QJsonValue printer : object.value(QLatin1String("printers")).toArray())
            checkPrinter(printer);
        showState(*state);
    }
    if (const auto alerts = decoded<AlertsResult>(body, "alerts")) {
        checkWhole(alerts->unread, object.value(QLatin1String("unread")));
        showAlerts(alerts->alerts);
    }
    decoded<ScanResult>(body, "scan");
    decoded<NetResult>(body, "network");
    decoded<UsbResult>(body, "usb");
    decoded<BonjourResult>(body, "bonjour");
    return 0;
}
