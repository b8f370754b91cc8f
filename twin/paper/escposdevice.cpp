#include "twin/paper/escpos.h"

#include <QJsonObject>

namespace zemrak::paper {

// GS V: ESC/POS command reference; 0 and 1 (also as digits) cut here, 65 and 66 after a feed. Those from 97 on cut
// later, at a place that would need a sheet of its own.
void EscPos::cutPaper(Bytes parameters)
{
    const int mode = byteAt(parameters, 0);
    switch (mode) {
    case 0:
    case '0':
        return cut(QStringLiteral("full"));
    case 1:
    case '1':
        return cut(QStringLiteral("partial"));
    case 65:
    case 66:
        press().feed(dotsDown(byteAt(parameters, 1)));
        return cut(mode == 65 ? QStringLiteral("full") : QStringLiteral("partial"));
    case 103:
    case 104:
        press().feed(dotsDown(byteAt(parameters, 1)));
        return cut(mode == 103 ? QStringLiteral("full") : QStringLiteral("partial"));
    default:
        problem(QStringLiteral("unknown way to cut"));
    }
}

void EscPos::cutFull(Bytes)
{
    cut(QStringLiteral("full"));
}

void EscPos::cutPartial(Bytes)
{
    cut(QStringLiteral("partial"));
}

void EscPos::pulsePin(Bytes parameters)
{
    const int connector = digitAt(parameters, 0);
    if (connector > 1)
        problem(QStringLiteral("a drawer is on pin 2 or 5"));
    else
        pulse(connector == 0 ? 2 : 5, 2 * byteAt(parameters, 1));
}

void EscPos::buzzer(Bytes)
{
    press().note(QStringLiteral("buzzer"), {});
}

void EscPos::buzzerByTime(Bytes parameters)
{
    press().note(QStringLiteral("buzzer"),
        {{QStringLiteral("times"), byteAt(parameters, 0)},
            {QStringLiteral("milliseconds"), 50 * byteAt(parameters, 1)}});
}

void EscPos::status(Bytes parameters)
{
    ask(Request::TransmitStatus, parameters);
}

void EscPos::paperSensor(Bytes)
{
    ask(Request::TransmitPaperSensor);
}

void EscPos::peripheral(Bytes parameters)
{
    ask(Request::TransmitPeripheral, parameters);
}

void EscPos::identify(Bytes parameters)
{
    ask(Request::Identify, parameters);
}

void EscPos::automaticStatus(Bytes parameters)
{
    ask(Request::AutomaticStatus, parameters);
}

void EscPos::responses(Bytes parameters)
{
    const QByteArrayView function = parameters.sliced(2);
    if (function.size() == 6 && byteAt(function, 0) == 48 && byteAt(function, 1) == 48)
        ask(Request::ProcessId, function.sliced(2));
    else if (function.size() == 3 && byteAt(function, 0) == 49 && byteAt(function, 1) == 48)
        ask(Request::OfflineResponse, function.sliced(2));
    else
        problem(QStringLiteral("unknown function"));
}

void EscPos::unknownFunction(Bytes)
{
    problem(QStringLiteral("unknown function"));
}

} // namespace zemrak::paper
