#include "model/profile.h"

#include "model/fieldreader.h"

namespace zemrak {

namespace {

QString decodeDrawerPin(const QJsonValue &value)
{
    if (const std::optional<qint64> number = toInteger(value))
        return QString::number(*number);
    return toText(value).value_or(QStringLiteral("2"));
}

} // namespace

std::optional<Profile> Profile::decode(const QJsonValue &value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject fields = value.toObject();
    const QJsonObject codepage = fields.value(QLatin1String("codepage")).toObject();
    return Profile{
        .protocolName = toText(fields.value(QLatin1String("protocol"))),
        .dots = toInteger(fields.value(QLatin1String("dots"))),
        .cut = toText(fields.value(QLatin1String("cut"))),
        .dither = toText(fields.value(QLatin1String("dither"))),
        .alias = toText(fields.value(QLatin1String("alias"))),
        .role = toText(fields.value(QLatin1String("role"))),
        .drawerPin = decodeDrawerPin(fields.value(QLatin1String("drawerPin"))),
        .codepageEncoding = toText(codepage.value(QLatin1String("encoding"))),
        .codepageEscT = toInteger(codepage.value(QLatin1String("escT"))),
    };
}

} // namespace zemrak
