#include "twin/twin.h"

#include "twin/faces/lpdlink.h"
#include "twin/faces/rawlink.h"

namespace zemrak::twin {

Twin::Twin(const Options &options)
    : m_options(options)
    , m_printer({.language = options.language, .dots = options.dots})
    , m_receipts(options.folder)
    , m_raw(m_printer, QStringLiteral("tcp"),
          [this](int descriptor, const QString &name) -> QObject * {
              return new RawLink(descriptor, m_printer.openLine(name), &m_printer);
          })
    , m_lpd(m_printer, QStringLiteral("lpd"),
          [this](int descriptor, const QString &name) -> QObject * {
              return new LpdLink(descriptor, name, m_printer, &m_printer);
          })
    , m_serial(m_printer)
    , m_control(m_printer, m_receipts)
{
    m_printer.setKnobs(options.knobs);
    QObject::connect(&m_printer, &Printer::receiptFinished, &m_receipts, &Receipts::keep);
}

QString Twin::open()
{
    if (!m_receipts.problem().isEmpty())
        return m_receipts.problem();
    const auto door = [this](Door &which, std::optional<quint16> port) {
        const QString problem = port ? which.open(m_options.address, *port) : QString();
        return problem.isEmpty()
            ? QString()
            : QStringLiteral("port %1 of %2: %3").arg(*port).arg(m_options.address.toString(), problem);
    };
    if (const QString problem = door(m_raw, m_options.port); !problem.isEmpty())
        return problem;
    if (const QString problem = door(m_lpd, m_options.lpdPort); !problem.isEmpty())
        return problem;
    if (m_options.serial)
        if (const QString problem = m_serial.open(m_options.serialLink); !problem.isEmpty())
            return QStringLiteral("serial: %1").arg(problem);
    if (m_options.controlPort) {
        m_controlPort = m_control.listen(*m_options.controlPort);
        if (m_controlPort == 0)
            return QStringLiteral("port %1 of 127.0.0.1 is taken").arg(*m_options.controlPort);
    }
    return {};
}

QJsonObject Twin::places() const
{
    QJsonObject object{{QStringLiteral("address"), m_options.address.toString()}};
    if (m_options.port)
        object.insert(QStringLiteral("port"), m_raw.port());
    if (m_options.lpdPort)
        object.insert(QStringLiteral("lpdPort"), m_lpd.port());
    if (m_options.serial)
        object.insert(QStringLiteral("serial"), m_serial.device());
    if (m_options.controlPort)
        object.insert(QStringLiteral("controlPort"), m_controlPort);
    if (!m_options.folder.isEmpty())
        object.insert(QStringLiteral("folder"), m_options.folder);
    return object;
}

} // namespace zemrak::twin
