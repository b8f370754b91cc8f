#pragma once

#include "twin/printer/printer.h"
#include "twin/window/look.h"

#include <QFrame>
#include <QLabel>

class QVBoxLayout;

namespace zemrak::twin {

/// The printer's state and its knobs, as switches and choices. What another turns, over HTTP, shows here too.
class KnobPanel : public QFrame
{
    Q_OBJECT

public:
    KnobPanel(Printer &printer, const QString &place, const Look &look, QWidget *parent);

Q_SIGNALS:
    void clearWanted();
    void knobsShown(); ///< show how the knobs stand

private:
    struct Choice
    {
        int value;
        const char *text;
    };

    void addSection(const char *title);
    void addSegments(Knob knob, const QList<Choice> &choices);
    void addSwitch(Knob knob, int on, const char *text);
    void addChoice(Knob knob, const char *title, const QList<Choice> &choices);
    void turn(Knob knob, int value);
    void showState();

    Printer &m_printer;
    const Look &m_look;
    QVBoxLayout *m_rows;
    QLabel *m_state;
};

} // namespace zemrak::twin
