#pragma once

#include "twin/faces/connection.h"
#include "twin/printer/line.h"

#include <QPointer>

namespace zemrak::twin {

/// Ties a connection to a line of the printer: bytes one way, answers the other. It is gone when the connection is.
class RawLink : public QObject
{
    Q_OBJECT

public:
    /// Takes the descriptor over.
    RawLink(int descriptor, Line *line, QObject *parent);
    ~RawLink() override;

private:
    void finish(bool lost);

    Connection m_connection;
    QPointer<Line> m_line;
};

} // namespace zemrak::twin
