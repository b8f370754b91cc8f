#include "twin/faces/lpdlink.h"

#include <algorithm>

namespace zemrak::twin {

namespace {

constexpr qsizetype longestCommand = 1024;
constexpr qint64 largestControlFile = 64 * 1024;
constexpr qsizetype piece = 4096;

} // namespace

LpdLink::LpdLink(int descriptor, const QString &name, Printer &printer, QObject *parent)
    : QObject(parent)
    , m_connection(descriptor, nullptr)
    , m_printer(printer)
    , m_name(name)
{
    connect(&m_connection, &Connection::received, this, &LpdLink::take);
    connect(&m_connection, &Connection::finished, this, &LpdLink::finish);
    want();
}

LpdLink::~LpdLink()
{
    if (m_line)
        m_line->end(true);
}

void LpdLink::want()
{
    const bool full = m_line && m_line->room() <= 0;
    m_connection.setWanted(full ? 0 : m_line ? std::min(piece, m_line->room()) : piece);
}

void LpdLink::take(const QByteArray &bytes)
{
    m_bytes += bytes;
    bool goesOn = true;
    while (goesOn && !m_bytes.isEmpty() && m_connection.isOpen()) {
        switch (m_state) {
        case State::Command:
            goesOn = takeCommand();
            break;
        case State::Subcommand:
            goesOn = takeSubcommand();
            break;
        case State::ControlFile:
        case State::DataFile:
            goesOn = takeFile();
            break;
        }
    }
    want();
}

/// Up to a line feed, which is taken too; empty when it has not come.
QByteArray LpdLink::takeLine()
{
    const qsizetype end = m_bytes.indexOf('\n');
    if (end < 0) {
        if (m_bytes.size() > longestCommand)
            m_connection.close();
        return {};
    }
    const QByteArray line = m_bytes.first(end + 1);
    m_bytes.remove(0, end + 1);
    return line;
}

bool LpdLink::takeCommand()
{
    const QByteArray line = takeLine();
    if (line.isEmpty())
        return false;
    switch (line.front()) {
    case 1: // print what waits
    case 5: // remove jobs: none of them waits
        acknowledge(true);
        break;
    case 2: // receive a job
        m_state = State::Subcommand;
        acknowledge(true);
        break;
    case 3: // the queue's state, short and long
    case 4:
        m_connection.write(m_printer.isBusy() ? "paper-twin is printing\n" : "paper-twin is ready: no entries\n");
        m_connection.closeWhenWritten();
        deleteLater();
        break;
    default:
        acknowledge(false);
    }
    return true;
}

bool LpdLink::takeSubcommand()
{
    const QByteArray line = takeLine();
    if (line.isEmpty())
        return false;
    bool isNumber = false;
    const qint64 size = line.mid(1).trimmed().split(' ').value(0).toLongLong(&isNumber);
    const bool isFile = isNumber && size >= 0;
    if (line.front() == 1) { // abandons the job: what came before is printed
        m_state = State::Command;
        acknowledge(true);
    } else if (line.front() == 2 && isFile && size <= largestControlFile) {
        m_state = State::ControlFile;
        m_left = size + 1;
        acknowledge(true);
    } else if (line.front() == 3 && isFile) {
        m_state = State::DataFile;
        m_left = size == 0 ? -1 : size + 1; // of a size of 0 the sender does not know it
        m_line = m_printer.openLine(QStringLiteral("%1-file%2").arg(m_name).arg(++m_files));
        connect(m_line, &Line::roomChanged, this, &LpdLink::want);
        connect(m_line, &Line::closeWanted, this, [this](bool reset) {
            m_connection.close(reset);
            deleteLater();
        });
        acknowledge(true);
    } else {
        acknowledge(false);
    }
    return true;
}

bool LpdLink::takeFile()
{
    // All but the NUL that ends it.
    const qsizetype content = m_left < 0 ? m_bytes.size() : std::min<qint64>(m_bytes.size(), m_left - 1);
    if (content > 0) {
        const QByteArray bytes = m_bytes.first(content);
        m_bytes.remove(0, content);
        if (m_left > 0)
            m_left -= content;
        if (m_state == State::DataFile && m_line)
            m_line->receive(bytes);
    }
    if (m_left != 1 || m_bytes.isEmpty())
        return false;
    m_bytes.remove(0, 1);
    if (m_state == State::DataFile)
        dataComplete();
    m_state = State::Subcommand;
    acknowledge(true);
    return true;
}

void LpdLink::dataComplete()
{
    if (m_line) {
        m_line->disconnect(this);
        m_line->end();
    }
    m_line = nullptr;
}

void LpdLink::acknowledge(bool good)
{
    m_connection.write(QByteArray(1, good ? '\0' : '\1'));
}

void LpdLink::finish(bool lost)
{
    if (m_line)
        m_line->end(lost || m_left > 0);
    m_line = nullptr;
    deleteLater();
}

} // namespace zemrak::twin
