#pragma once

#include "twin/control/control.h"
#include "twin/faces/door.h"
#include "twin/faces/serialface.h"
#include "twin/options.h"

namespace zemrak::twin {

/// A whole twin: the printer, its faces, its receipts and their control, put together as the options say.
class Twin
{
public:
    explicit Twin(const Options &options);

    /// Opens the faces. @returns an empty string, or what could not be opened and why
    [[nodiscard]] QString open();
    /// Where it listens, for whoever started it.
    [[nodiscard]] QJsonObject places() const;

    [[nodiscard]] Printer &printer() { return m_printer; }
    [[nodiscard]] Receipts &receipts() { return m_receipts; }

private:
    Options m_options;
    Printer m_printer;
    Receipts m_receipts;
    Door m_raw;
    Door m_lpd;
    SerialFace m_serial;
    Control m_control;
    quint16 m_controlPort = 0;
};

} // namespace zemrak::twin
