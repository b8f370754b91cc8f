#pragma once

#include "twin/faces/connection.h"
#include "twin/printer/printer.h"

#include <QPointer>

namespace zemrak::twin {

/// A connection by the line printer daemon protocol (RFC 1179): each data file is a line of the printer. Every queue
/// name is the printer's. Gone when the connection is.
class LpdLink : public QObject
{
    Q_OBJECT

public:
    /// Takes the descriptor over.
    LpdLink(int descriptor, const QString &name, Printer &printer, QObject *parent);
    ~LpdLink() override;

private:
    enum class State
    {
        Command,
        Subcommand,
        ControlFile,
        DataFile
    };

    void take(const QByteArray &bytes);
    [[nodiscard]] bool takeCommand();
    [[nodiscard]] bool takeSubcommand();
    [[nodiscard]] bool takeFile();
    void dataComplete();
    void acknowledge(bool good);
    void want();
    void finish(bool lost);
    [[nodiscard]] QByteArray takeLine();

    Connection m_connection;
    Printer &m_printer;
    QString m_name;
    QPointer<Line> m_line;
    QByteArray m_bytes; ///< that have come and are not dealt with
    State m_state = State::Command;
    qint64 m_left = 0; ///< of the file, with the byte that ends it; negative = it ends with the connection
    int m_files = 0;
};

} // namespace zemrak::twin
