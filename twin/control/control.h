#pragma once

#include "twin/control/receipts.h"
#include "twin/printer/printer.h"

#include <QHttpServer>

namespace zemrak::twin {

/// The knobs, and what has come, as JSON over HTTP; on this computer only. `usage` lists what can be asked.
class Control
{
public:
    static const char usage[];

    Control(Printer &printer, Receipts &receipts);
    /// @param port 0 = any free one
    /// @returns the port; 0 when it cannot
    [[nodiscard]] quint16 listen(quint16 port);

private:
    [[nodiscard]] QHttpServerResponse status() const;
    [[nodiscard]] QHttpServerResponse turn(const QHttpServerRequest &request);
    [[nodiscard]] QHttpServerResponse receipt(const QString &name) const;

    Printer &m_printer;
    Receipts &m_receipts;
    QHttpServer m_server;
};

} // namespace zemrak::twin
