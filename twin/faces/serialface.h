#pragma once

#include "twin/faces/connection.h"
#include "twin/printer/printer.h"

#include <QPointer>
#include <QTimer>

namespace zemrak::twin {

/// A serial port: a pseudo-terminal that programs open as they would a device. A line of the printer lasts while a
/// program has it open.
class SerialFace : public QObject
{
    Q_OBJECT

public:
    explicit SerialFace(Printer &printer);
    ~SerialFace() override;

    /// @param link a symbolic link to the device, under a name that stays the same; empty = none. One that is there is
    /// replaced, anything else is left alone.
    /// @returns an empty string, or why it cannot
    [[nodiscard]] QString open(const QString &link);
    /// The device, as in "/dev/pts/3".
    [[nodiscard]] const QString &device() const { return m_device; }

private:
    void look();
    void hangUp();

    Printer &m_printer;
    QString m_device;
    QString m_link;
    int m_master = -1;
    std::unique_ptr<Connection> m_connection; ///< while a program has the device open
    QPointer<Line> m_line;
    QTimer m_looks; ///< while nobody has it open: the system does not tell when that changes
    int m_count = 0;
};

} // namespace zemrak::twin
