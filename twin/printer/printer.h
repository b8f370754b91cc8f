#pragma once

#include "twin/control/knobs.h"
#include "twin/paper/interpreter.h"
#include "twin/printer/journal.h"
#include "twin/printer/line.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>

namespace zemrak::twin {

/// The printer behind the faces: it prints its lines' bytes one line after the other, as fast and as long as its knobs
/// let it, and answers questions. Main thread only.
class Printer : public QObject, private paper::Listener
{
    Q_OBJECT

public:
    struct Model
    {
        paper::Language language = paper::Language::EscPos;
        int dots = 576;
        QByteArray serial = "TWIN000001";
    };

    explicit Printer(const Model &model, QObject *parent = nullptr);
    ~Printer() override;

    [[nodiscard]] const Knobs &knobs() const { return m_knobs; }
    void setKnobs(const Knobs &knobs);
    /// Turns knobs when so many more bytes have been printed, to the byte. @returns false when too many wait already
    bool setKnobsLater(qint64 bytes, const QJsonObject &change);

    /// Opens a line. It belongs to the printer, which lets it go once it has ended and is printed.
    Line *openLine(const QString &name);
    /// How many lines have not ended.
    [[nodiscard]] int openLines() const;
    /// Whether a line has bytes that are not printed yet.
    [[nodiscard]] bool isBusy() const;
    /// Switches it off and on: lines are cut off, their bytes are lost, and so is what was being printed.
    void powerCycle();

    [[nodiscard]] const Model &model() const { return m_model; }
    [[nodiscard]] const paper::Receipt &current() const { return m_interpreter.current(); }
    /// Of the paper that sticks out.
    [[nodiscard]] int currentRows() const { return m_interpreter.rows(); }
    [[nodiscard]] Journal &journal() { return m_journal; }

Q_SIGNALS:
    void knobsChanged();
    void paperMoved();
    void receiptFinished(const zemrak::paper::Receipt &receipt);

private:
    struct Later
    {
        qint64 at; ///< of the printed bytes
        QJsonObject change;
    };

    void finished(paper::Receipt receipt) override;
    void asked(paper::Request request, QByteArrayView parameters) override;
    void obey(Line *line, const RealTimeCommand &command);
    void answer(Line *line, const QString &question, const QByteArray &bytes, bool realTime = false);
    void send(Line *line, const QByteArray &bytes);
    [[nodiscard]] Knobs told() const;
    void tellLines(const Knobs &before);
    void work();
    void print(Line *line);
    void sweep();
    void letGo(Line *line);
    [[nodiscard]] Line *lineToPrint();
    [[nodiscard]] qsizetype budget();
    void applyLater();
    void giveRoom();
    void tick();
    void updateTimers();

    Model m_model;
    Knobs m_knobs;
    paper::Interpreter m_interpreter;
    Journal m_journal;
    QList<Line *> m_lines; ///< in the order in which they were opened
    Line *m_printing = nullptr;
    QList<Later> m_later;
    QTimer m_ticks; ///< for speed and flood
    QTimer m_lumps;
    QElapsedTimer m_sincePrinted;
    QElapsedTimer m_sinceFlood;
    int m_ends = 0; ///< ETB counted by Star's automatic status
    bool m_endUntold = false;
    bool m_working = false;
    bool m_workQueued = false;
};

} // namespace zemrak::twin
