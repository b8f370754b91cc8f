// The printer's part in the dialogue: what it is asked, and what it says.

#include "twin/printer/dialogue.h"
#include "twin/printer/printer.h"

namespace zemrak::twin {

namespace {

int firstOf(QByteArrayView parameters)
{
    return parameters.isEmpty() ? 0 : static_cast<uchar>(parameters.front());
}

} // namespace

/// The state as the answers have it.
Knobs Printer::told() const
{
    Knobs state = m_knobs;
    if (m_knobs[Knob::Answers] != AnswersAllWell && m_knobs[Knob::Answers] != AnswersOutOfPaper)
        return state;
    for (const Knob knob : {Knob::Cover, Knob::Button, Knob::Error, Knob::Paper})
        state.set(knob, 0);
    if (m_knobs[Knob::Answers] == AnswersOutOfPaper)
        state.set(Knob::Paper, PaperOut);
    return state;
}

void Printer::answer(Line *line, const QString &question, const QByteArray &bytes, bool realTime)
{
    if (!question.isEmpty())
        m_journal.asked(line->name(), question);
    const int answers = m_knobs[Knob::Answers];
    if (bytes.isEmpty() || answers == AnswersSilent || (answers == AnswersRealTimeOnly && !realTime))
        return;
    send(line, answers == AnswersNonsense ? QByteArray(bytes.size(), '\x7e') : bytes);
}

void Printer::send(Line *line, const QByteArray &bytes)
{
    const auto go = [this, line, bytes] {
        m_journal.answered(line->name(), bytes);
        Q_EMIT line->answer(bytes);
    };
    if (const int delay = m_knobs[Knob::AnswerDelay]; delay > 0)
        QTimer::singleShot(delay, line, go);
    else
        go();
}

void Printer::obey(Line *line, const RealTimeCommand &command)
{
    using Kind = RealTimeCommand::Kind;
    switch (command.kind) {
    case Kind::Status:
        return answer(
            line, QStringLiteral("DLE EOT %1").arg(command.n), dialogue::realTimeStatus(told(), command.n), true);
    case Kind::StarStatus:
        answer(line, QStringLiteral("ESC ACK SOH"), dialogue::starStatus(told(), m_ends, m_endUntold), true);
        m_endUntold = false;
        return;
    case Kind::Recover: {
        m_journal.asked(line->name(), QStringLiteral("DLE ENQ %1").arg(command.n));
        if (command.n == 2)
            line->forget();
        Knobs mended = m_knobs;
        if (m_knobs[Knob::Error] == ErrorCutter)
            mended.set(Knob::Error, ErrorNone);
        return setKnobs(mended);
    }
    case Kind::Pulse:
        m_journal.asked(line->name(), QStringLiteral("DLE DC4 1"));
        return m_interpreter.pulse(command.n == 0 ? 2 : 5, 100 * command.time);
    case Kind::Clear:
        line->forget();
        m_interpreter.powerCycle();
        return answer(line, QStringLiteral("DLE DC4 8"), QByteArray("\x37\x25\x00", 3), true);
    case Kind::StarReset:
        line->forget();
        m_interpreter.powerCycle();
        return m_journal.asked(line->name(), QStringLiteral("ESC ACK CAN"));
    }
}

void Printer::asked(paper::Request request, QByteArrayView parameters)
{
    Line *line = m_printing;
    if (line == nullptr)
        return;
    const bool star = m_model.language == paper::Language::StarLine;
    const int n = firstOf(parameters);
    switch (request) {
    case paper::Request::Initialise:
        if (!star)
            line->automaticStatus = 0; // ESC @ sets it back, as GS a says
        return;
    case paper::Request::TransmitStatus:
        return answer(line, QStringLiteral("GS r %1").arg(n % 48), dialogue::transmittedStatus(told(), n));
    case paper::Request::TransmitPaperSensor:
        return answer(line, QStringLiteral("ESC v"), dialogue::transmittedStatus(told(), 1));
    case paper::Request::TransmitPeripheral:
        return answer(line, QStringLiteral("ESC u"), dialogue::transmittedStatus(told(), 2));
    case paper::Request::Identify:
        return answer(line, QStringLiteral("GS I %1").arg(n >= 49 && n <= 51 ? n - 48 : n),
            dialogue::identity(n, m_model.serial));
    case paper::Request::AutomaticStatus:
        line->automaticStatus = n;
        return answer(line, star ? QStringLiteral("ESC RS a %1").arg(n) : QStringLiteral("GS a %1").arg(n),
            n == 0     ? QByteArray()
                : star ? dialogue::starStatus(told(), m_ends, m_endUntold)
                       : dialogue::automaticStatus(told()));
    case paper::Request::ProcessId:
        return answer(line, QStringLiteral("GS ( H 48"), dialogue::processId(parameters));
    case paper::Request::OfflineResponse:
        line->offlineResponse = n % 48;
        return m_journal.asked(line->name(), QStringLiteral("GS ( H 49"));
    case paper::Request::EndCounter:
        m_ends = (m_ends + 1) % 32;
        m_endUntold = true;
        m_journal.asked(line->name(), QStringLiteral("ETB"));
        if (line->automaticStatus == 0)
            return;
        answer(line, {}, dialogue::starStatus(told(), m_ends, m_endUntold));
        m_endUntold = false;
        return;
    case paper::Request::ResetEndCounter:
        m_ends = 0;
        m_endUntold = false;
        return;
    }
}

/// What changes is told to the lines that asked to be told. Lies do not change.
void Printer::tellLines(const Knobs &before)
{
    if (m_knobs[Knob::Answers] == AnswersAllWell || m_knobs[Knob::Answers] == AnswersOutOfPaper)
        return;
    const bool goesOffline
        = !dialogue::isOffline(before) && dialogue::isOffline(m_knobs) && m_knobs[Knob::Button] == before[Knob::Button];
    const QList<Line *> lines = m_lines;
    for (Line *line : lines) {
        const bool star = m_model.language == paper::Language::StarLine;
        if (dialogue::isWorthTelling(
                before, m_knobs, star && line->automaticStatus != 0 ? 0xff : line->automaticStatus))
            answer(line, {},
                star ? dialogue::starStatus(m_knobs, m_ends, m_endUntold) : dialogue::automaticStatus(m_knobs));
        if (goesOffline && line->offlineResponse != 0)
            answer(line, {}, dialogue::offlineResponse(m_knobs, line->offlineResponse));
    }
}

} // namespace zemrak::twin
