#include "platform/linux/procportholders.h"
#include "support/testmain.h"

#include <QCoreApplication>
#include <QTcpServer>
#include <QTest>

#include <unistd.h>

using namespace zemrak;
using namespace zemrak::linux_;

Q_DECLARE_METATYPE(QList<zemrak::linux_::ListeningSocket>)

class PortHoldersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ownListenerIsFound_data()
    {
        QTest::addColumn<QHostAddress>("address");
        QTest::addColumn<bool>("conflicts");
        QTest::newRow("loopback") << QHostAddress(QHostAddress::LocalHost) << true;
        QTest::newRow("every address") << QHostAddress(QHostAddress::AnyIPv4) << true;
        QTest::newRow("every address of both kinds") << QHostAddress(QHostAddress::Any) << true;
        QTest::newRow("another address") << QHostAddress(QStringLiteral("127.0.0.2")) << false;
    }
    void ownListenerIsFound()
    {
        QFETCH(QHostAddress, address);
        QFETCH(bool, conflicts);
        QTcpServer server;
        QTcpServer bystander;
        if (!server.listen(address) || !bystander.listen(QHostAddress::LocalHost))
            QSKIP("This machine has no such address");
        const QList<PortHolder> holders = ProcPortHolders().find({server.serverPort()}, false);
        QCOMPARE(holders.size(), conflicts ? 1 : 0);
        if (!conflicts)
            return;
        const PortHolder &holder = holders.first();
        QCOMPARE(holder.port, server.serverPort());
        QCOMPARE(holder.processId, std::optional(QCoreApplication::applicationPid()));
        QCOMPARE(holder.program, QStringLiteral("tst_platform"));
        QCOMPARE(holder.userId, std::optional<quint32>(getuid()));
        server.close();
        QVERIFY(ProcPortHolders().find({holder.port}, false).isEmpty());
    }

    // Which process it is may stay open, never that somebody holds the port.
    void cancelledLookStillNamesTheUser()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        const QList<PortHolder> holders = ProcPortHolders().find({server.serverPort()}, true);
        QCOMPARE(holders.size(), 1);
        QVERIFY(!holders.first().processId && holders.first().program.isEmpty());
        QCOMPARE(holders.first().userId, std::optional<quint32>(getuid()));
    }

    void readsTheListOfSockets_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QList<ListeningSocket>>("sockets");
        const auto row = [](const char *name, const char *line, QList<ListeningSocket> sockets = {}) {
            QTest::newRow(name) << QByteArray(line) << sockets;
        };
        const ListeningSocket found{.port = 17731, .userId = 1000, .inode = "4711"};
        row("listening",
            "   0: 0100007F:4543 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000  0 4711 1 0", {found});
        row("on both kinds",
            "   0: 00000000000000000000000000000000:4543 00000000000000000000000000000000:0000 0A 0:0 00:0 0 1000 0 "
            "4711 1",
            {found});
        row("only connected",
            "   0: 0100007F:4543 0100007F:9999 01 00000000:00000000 00:00000000 00000000  1000  0 4711 1 0");
        row("another port",
            "   0: 0100007F:4545 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000  0 4711 1 0");
        row("only the newer loopback",
            "   0: 00000000000000000000000001000000:4543 00000000000000000000000000000000:0000 0A 0:0 00:0 0 1000 0 "
            "4711 1");
        row("heading",
            "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode");
        row("cut off", "   0: 0100007F:4543 00000000:0000 0A");
        row("nothing", "");
    }
    void readsTheListOfSockets()
    {
        if constexpr (Q_BYTE_ORDER != Q_LITTLE_ENDIAN)
            QSKIP("The rows are of a little-endian computer");
        QFETCH(QByteArray, line);
        QFETCH(QList<ListeningSocket>, sockets);
        QCOMPARE(listeningSockets("heading\n" + line + '\n', {17731, 17732}), sockets);
    }

    void namesAProgramWithoutItsSecrets_data()
    {
        QTest::addColumn<QByteArray>("commandLine");
        QTest::addColumn<QString>("name");
        const auto row = [](const QByteArray &words, const char *name) {
            QTest::newRow(name) << QByteArray(words).replace(' ', '\0') << QString::fromUtf8(name);
        };
        row("/opt/a/node /opt/a/zemrak-local-print.mjs run", "node zemrak-local-print.mjs");
        row("/usr/bin/python3 /srv/shop.py --password=x", "python3 shop.py");
        row("nginx: master", "nginx:");
        row("/usr/sbin/nginx --token=secret.js", "nginx");
        row("node --require=secret.js", "node");
        row("", "");
        row("/bin/a\nforged\x1b[31m", "a forged[31m");
    }
    void namesAProgramWithoutItsSecrets()
    {
        QFETCH(QByteArray, commandLine);
        QFETCH(QString, name);
        QCOMPARE(programName(commandLine), name);
    }
};

ZEMRAK_TEST(portholders, PortHoldersTest, QCoreApplication)
#include "tst_portholders.moc"
