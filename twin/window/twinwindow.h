#pragma once

#include "twin/printer/printer.h"
#include "twin/window/look.h"

#include <QWidget>

namespace zemrak::twin {

/// The twin's window: the paper, and beside it the knobs.
class TwinWindow : public QWidget
{
    Q_OBJECT

public:
    /// @param place where it listens, as a person would enter it: "127.0.0.1:9100"
    TwinWindow(Printer &printer, const QString &place, const Look &look);

private:
    Look m_look;
};

} // namespace zemrak::twin
