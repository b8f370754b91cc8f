#include "support/privatebus.h"

#include <csignal>

namespace zemrak::test {

PrivateBus::PrivateBus()
{
    m_daemon.setProcessChannelMode(QProcess::SeparateChannels);
    m_daemon.start(QStringLiteral("dbus-daemon"),
        {QStringLiteral("--config-file=" ZEMRAK_TEST_DATA "/private-bus.conf"), QStringLiteral("--nofork"),
            QStringLiteral("--print-address")});
    while (m_address.isEmpty()) {
        if (!m_daemon.canReadLine() && !m_daemon.waitForReadyRead(10'000))
            qFatal("No private session bus: %s", qUtf8Printable(m_daemon.errorString()));
        m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    }
}

PrivateBus::~PrivateBus()
{
    m_daemon.terminate();
    if (!m_daemon.waitForFinished(5000))
        m_daemon.kill();
    m_daemon.waitForFinished();
}

void PrivateBus::freeze() const
{
    ::kill(static_cast<pid_t>(m_daemon.processId()), SIGSTOP);
}

void PrivateBus::thaw() const
{
    ::kill(static_cast<pid_t>(m_daemon.processId()), SIGCONT);
}

BusClient::BusClient(const QString &address)
    : bus(QDBusConnection::connectToBus(address, QStringLiteral("client-%1").arg(quintptr(this))))
{
}

BusClient::~BusClient()
{
    QDBusConnection::disconnectFromBus(bus.name());
}

void BusClient::provide(const QString &service, const QString &path, QObject *object)
{
    constexpr auto all = QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals;
    if (!bus.registerObject(path, object, all) || !bus.registerService(service))
        qFatal("%s cannot be provided on the test's bus", qUtf8Printable(service));
}

} // namespace zemrak::test
