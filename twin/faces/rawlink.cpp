#include "twin/faces/rawlink.h"

namespace zemrak::twin {

RawLink::RawLink(int descriptor, Line *line, QObject *parent)
    : QObject(parent)
    , m_connection(descriptor, nullptr)
    , m_line(line)
{
    connect(&m_connection, &Connection::received, line, [this, line](const QByteArray &bytes) {
        line->receive(bytes);
        m_connection.setWanted(line->room());
    });
    connect(&m_connection, &Connection::finished, this, &RawLink::finish);
    connect(line, &Line::answer, &m_connection, &Connection::write);
    connect(line, &Line::roomChanged, this, [this, line] { m_connection.setWanted(line->room()); });
    connect(line, &Line::closeWanted, this, [this](bool reset) {
        m_connection.close(reset);
        deleteLater();
    });
    // The other side may have stopped sending and still wait for answers: the connection stays until all is printed.
    connect(line, &QObject::destroyed, this, &QObject::deleteLater);
    m_connection.setWanted(line->room());
}

RawLink::~RawLink()
{
    if (m_line)
        m_line->end(true);
}

void RawLink::finish(bool lost)
{
    if (lost) {
        m_connection.close();
        deleteLater();
    }
    if (m_line)
        m_line->end(lost);
}

} // namespace zemrak::twin
