#include "twin/printer/printer.h"

#include "twin/printer/dialogue.h"

#include <algorithm>

namespace zemrak::twin {

namespace {

constexpr int tickMs = 10;
constexpr qsizetype atOnce = 64 * 1024; // bytes printed before others have their turn
constexpr qsizetype laterMost = 16;
constexpr qsizetype floodMost = 64 * 1024; // for each tick

} // namespace

Printer::Printer(const Model &model, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_interpreter(model.language, model.dots, *this)
{
    m_ticks.setInterval(tickMs);
    m_ticks.setTimerType(Qt::PreciseTimer);
    connect(&m_ticks, &QTimer::timeout, this, &Printer::tick);
    connect(&m_lumps, &QTimer::timeout, this, [this] {
        for (Line *line : std::as_const(m_lines))
            line->setRoom(m_knobs[Knob::LumpBytes]);
    });
}

Printer::~Printer() = default;

void Printer::setKnobs(const Knobs &knobs)
{
    if (knobs == m_knobs)
        return;
    const Knobs before = std::exchange(m_knobs, knobs);
    updateTimers();
    tellLines(before);
    giveRoom();
    Q_EMIT knobsChanged();
    work();
}

bool Printer::setKnobsLater(qint64 bytes, const QJsonObject &change)
{
    if (m_later.size() >= laterMost)
        return false;
    m_later.append({m_journal.printedBytes() + bytes, change});
    applyLater();
    return true;
}

void Printer::applyLater()
{
    const qint64 printed = m_journal.printedBytes();
    for (qsizetype i = 0; i < m_later.size();) {
        if (m_later.at(i).at > printed) {
            ++i;
            continue;
        }
        QString problem;
        if (const std::optional<Knobs> knobs = m_knobs.changed(m_later.takeAt(i).change, &problem))
            setKnobs(*knobs);
        i = 0; // more may have been added
    }
}

Line *Printer::openLine(const QString &name)
{
    auto *line = new Line(name, m_model.language == paper::Language::StarLine, this);
    m_lines.append(line);
    m_journal.connected(name);
    connect(line, &Line::arrived, this, [this](qsizetype bytes) {
        m_journal.received(bytes);
        work();
    });
    connect(line, &Line::realTime, this, [this, line](const RealTimeCommand &command) { obey(line, command); });
    connect(line, &Line::ended, this, [this, line](bool lost) {
        m_journal.ended(line->name(), lost);
        work();
    });
    updateTimers();
    giveRoom();
    return line;
}

int Printer::openLines() const
{
    return static_cast<int>(
        std::count_if(m_lines.begin(), m_lines.end(), [](Line *line) { return !line->hasEnded(); }));
}

bool Printer::isBusy() const
{
    return std::any_of(m_lines.begin(), m_lines.end(), [](Line *line) { return !line->waiting().isEmpty(); });
}

void Printer::powerCycle()
{
    const QList<Line *> lines = m_lines;
    for (Line *line : lines) {
        line->forget();
        Q_EMIT line->closeWanted(true);
        line->end(true);
    }
    m_interpreter.powerCycle();
    m_ends = 0;
    m_endUntold = false;
    work();
}

// A line keeps the printer from its first byte to its end, as the others' bytes would come out in between.
Line *Printer::lineToPrint()
{
    if (m_printing != nullptr)
        return m_printing;
    for (Line *line : std::as_const(m_lines))
        if (!line->waiting().isEmpty() && !line->onlyAsks())
            return m_printing = line;
    return nullptr;
}

void Printer::letGo(Line *line)
{
    m_lines.removeOne(line);
    line->deleteLater();
}

/// Lines that have ended without a byte to print.
void Printer::sweep()
{
    const QList<Line *> lines = m_lines;
    for (Line *line : lines)
        if (line != m_printing && line->hasEnded() && (line->waiting().isEmpty() || line->onlyAsks()))
            letGo(line);
}

qsizetype Printer::budget()
{
    const int speed = m_knobs[Knob::Speed];
    if (speed == 0)
        return atOnce;
    if (!m_sincePrinted.isValid()) {
        m_sincePrinted.start();
        return 0;
    }
    const qint64 bytes = m_sincePrinted.nsecsElapsed() / 1000 * speed / 1'000'000;
    if (bytes == 0)
        return 0;
    m_sincePrinted.restart();
    return std::min<qint64>(bytes, atOnce);
}

void Printer::work()
{
    if (m_working)
        return; // what it led to is seen before it ends
    m_working = true;
    sweep();
    const bool offline = dialogue::isOffline(m_knobs);
    Line *line = offline ? nullptr : lineToPrint();
    if (line != nullptr)
        print(line);
    else
        m_sincePrinted.invalidate();
    giveRoom();
    m_working = false;
    const bool more = !dialogue::isOffline(m_knobs)
        && (m_printing != nullptr ? !m_printing->waiting().isEmpty() || m_printing->hasEnded()
                                  : lineToPrint() != nullptr);
    if (more && m_knobs[Knob::Speed] == 0 && !m_workQueued) {
        m_workQueued = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_workQueued = false;
                work();
            },
            Qt::QueuedConnection);
    }
}

void Printer::print(Line *line)
{
    qsizetype bytes = std::min(line->waiting().size(), budget());
    for (const Later &later : std::as_const(m_later))
        bytes = std::min<qint64>(bytes, later.at - m_journal.printedBytes());
    if (bytes > 0) {
        const QByteArray piece = line->waiting().first(bytes);
        line->printed(bytes);
        m_journal.printed(bytes);
        m_interpreter.take(piece);
        applyLater();
        Q_EMIT paperMoved();
    }
    if (line->waiting().isEmpty() && line->hasEnded() && !dialogue::isOffline(m_knobs)) {
        m_interpreter.endJob();
        m_printing = nullptr;
        letGo(line);
        Q_EMIT paperMoved();
    }
}

void Printer::giveRoom()
{
    if (m_knobs[Knob::Reading] == ReadingLumps)
        return; // the timer gives it
    const QList<Line *> lines = m_lines;
    for (Line *line : lines) {
        const qsizetype room
            = m_knobs[Knob::Reading] == ReadingNever ? 0 : m_knobs[Knob::Buffer] - line->waiting().size();
        const qint64 most = m_knobs[Knob::CloseAfter];
        if (most > 0 && line->received() >= most && !line->hasEnded()) {
            Q_EMIT line->closeWanted(m_knobs[Knob::CloseWith] == CloseWithReset);
            line->end(false);
            continue;
        }
        line->setRoom(std::max<qsizetype>(0, most > 0 ? std::min<qint64>(room, most - line->received()) : room));
    }
}

void Printer::tick()
{
    if (m_knobs[Knob::Speed] > 0)
        work();
    if (const int flood = m_knobs[Knob::Flood]; flood > 0) {
        const qint64 bytes = std::min<qint64>(floodMost, m_sinceFlood.elapsed() * flood / 1000);
        if (bytes > 0) {
            m_sinceFlood.restart();
            for (Line *line : std::as_const(m_lines))
                if (!line->hasEnded())
                    Q_EMIT line->answer(QByteArray(bytes, '\x11'));
        }
    }
    updateTimers();
}

void Printer::updateTimers()
{
    if (m_knobs[Knob::Flood] > 0 && !m_sinceFlood.isValid())
        m_sinceFlood.start();
    else if (m_knobs[Knob::Flood] == 0)
        m_sinceFlood.invalidate();
    const bool ticks = !m_lines.isEmpty() && (m_knobs[Knob::Speed] > 0 || m_knobs[Knob::Flood] > 0);
    if (ticks != m_ticks.isActive())
        ticks ? m_ticks.start() : m_ticks.stop();
    const bool lumps = !m_lines.isEmpty() && m_knobs[Knob::Reading] == ReadingLumps;
    if (lumps && (!m_lumps.isActive() || m_lumps.interval() != m_knobs[Knob::LumpEvery]))
        m_lumps.start(m_knobs[Knob::LumpEvery]);
    else if (!lumps)
        m_lumps.stop();
}

void Printer::finished(paper::Receipt receipt)
{
    Q_EMIT receiptFinished(receipt);
}

} // namespace zemrak::twin
