#include "twin/control/knobs.h"

#include <QStringList>

#include <algorithm>

namespace zemrak::twin {

namespace {

constexpr int minuteMs = 60'000;
constexpr int megabytes = 1 << 20;

constexpr std::array<KnobSpec, knobCount> specs{{
    {Knob::Paper, "paper", "ok low out", 0, 0, 0, "what the paper sensors see; printing stops without paper"},
    {Knob::Cover, "cover", "closed open", 0, 0, 0, "printing stops while it is open"},
    {Knob::Button, "button", "online offline", 0, 0, 0,
        "the button on the printer; printing stops while it is offline"},
    {Knob::Error, "error", "none cutter overheated fatal", 0, 0, 0, "printing stops while there is one"},
    {Knob::Drawer, "drawer", "closed open", 0, 0, 0, "the cash drawer, whose pin is high while it is open"},
    {Knob::Speed, "speed", "", 0, 100 * megabytes, 0, "bytes printed in a second; 0 = at once"},
    {Knob::Reading, "reading", "steady never lumps", 0, 0, 0, "how it takes bytes from its lines"},
    {Knob::LumpBytes, "lumpBytes", "", 1, megabytes, 1024, "bytes of a lump"},
    {Knob::LumpEvery, "lumpEvery", "", 1, minuteMs, 1000, "milliseconds from one lump to the next"},
    {Knob::CloseAfter, "closeAfter", "", 0, 1000 * megabytes, 0,
        "closes a connection after so many bytes of it; 0 = never"},
    {Knob::CloseWith, "closeWith", "end reset", 0, 0, 0, "how it closes then"},
    {Knob::Connections, "connections", "many one-waits one-refuses refuse hold unreachable", 0, 0, 0,
        "TCP connections: any number, one while others wait unread or are refused, none, accepted by the system but "
        "never"
        " looked at, or no answer to them at all"},
    {Knob::Answers, "answers", "true realtime-only silent all-well out-of-paper nonsense", 0, 0, 0,
        "to questions: the truth, only to DLE EOT, nothing, or a lie"},
    {Knob::AnswerDelay, "answerDelay", "", 0, minuteMs, 0, "milliseconds before each answer"},
    {Knob::Flood, "flood", "", 0, megabytes, 0, "bytes a second that it sends without being asked"},
    {Knob::Buffer, "buffer", "", 16, 16 * megabytes, 4096, "bytes of a line that it takes before it has printed them"},
}};

QStringList choicesOf(const KnobSpec &spec)
{
    return QString::fromLatin1(spec.choices).split(u' ', Qt::SkipEmptyParts);
}

std::optional<int> valueOf(const KnobSpec &spec, const QJsonValue &value)
{
    const QStringList choices = choicesOf(spec);
    if (!choices.isEmpty()) {
        const qsizetype place = choices.indexOf(value.toString());
        return place < 0 ? std::nullopt : std::optional<int>(static_cast<int>(place));
    }
    const double number = value.toDouble(-1);
    const bool isWhole = number == static_cast<double>(static_cast<int>(std::clamp(number, -1.0, 2e9)));
    return isWhole && number >= spec.least && number <= spec.most ? std::optional<int>(static_cast<int>(number))
                                                                  : std::nullopt;
}

QString allowed(const KnobSpec &spec)
{
    return *spec.choices != '\0' ? choicesOf(spec).join(QStringLiteral(", "))
                                 : QStringLiteral("a whole number from %1 to %2").arg(spec.least).arg(spec.most);
}

} // namespace

std::span<const KnobSpec> knobSpecs()
{
    return specs;
}

const KnobSpec &specOf(Knob knob)
{
    return specs[static_cast<std::size_t>(knob)];
}

Knobs::Knobs()
{
    for (const KnobSpec &spec : specs)
        set(spec.knob, spec.usual);
}

QJsonObject Knobs::toJson() const
{
    QJsonObject object;
    for (const KnobSpec &spec : specs) {
        const int value = (*this)[spec.knob];
        const QStringList choices = choicesOf(spec);
        object.insert(
            QLatin1String(spec.name), choices.isEmpty() ? QJsonValue(value) : QJsonValue(choices.value(value)));
    }
    return object;
}

std::optional<Knobs> Knobs::changed(const QJsonObject &change, QString *problem) const
{
    Knobs result = *this;
    for (auto each = change.begin(); each != change.end(); ++each) {
        const auto *spec = std::find_if(
            specs.begin(), specs.end(), [&](const KnobSpec &one) { return each.key() == QLatin1String(one.name); });
        if (spec == specs.end()) {
            *problem = QStringLiteral("there is no knob \"%1\"").arg(each.key());
            return {};
        }
        const std::optional<int> value = valueOf(*spec, each.value());
        if (!value) {
            *problem = QStringLiteral("\"%1\" must be %2").arg(each.key(), allowed(*spec));
            return {};
        }
        result.set(spec->knob, *value);
    }
    return result;
}

std::optional<Knobs> Knobs::changed(const QString &assignment, QString *problem) const
{
    const qsizetype equals = assignment.indexOf(u'=');
    if (equals < 1) {
        *problem = QStringLiteral("\"%1\" is not a knob and its value, as in paper=out").arg(assignment);
        return {};
    }
    const QString value = assignment.mid(equals + 1);
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    return changed(QJsonObject{{assignment.left(equals), isNumber ? QJsonValue(number) : QJsonValue(value)}}, problem);
}

} // namespace zemrak::twin
