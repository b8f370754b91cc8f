#include "platform/linux/procportholders.h"
#include "support/testmain.h"

#include <QCoreApplication>
#include <QTcpServer>
#include <QTest>

#include <unistd.h>

using namespace zemrak;
using namespace zemrak::linux_;
using zemrak::test::InRow;

class PortHoldersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ownListenerIsFound()
    {
        const std::pair<QHostAddress, bool> rows[]
            = {{QHostAddress(QHostAddress::LocalHost), true}, {QHostAddress(QHostAddress::AnyIPv4), true},
                {QHostAddress(QHostAddress::Any), true}, {QHostAddress(QStringLiteral("127.0.0.2")), false}};
        for (const auto &[address, conflicts] : rows) {
            const InRow row(address.toString().toLatin1());
            QTcpServer server;
            QTcpServer bystander;
            QVERIFY(server.listen(address) && bystander.listen(QHostAddress::LocalHost));
            const QList<PortHolder> holders = ProcPortHolders().find({server.serverPort()}, false);
            QCOMPARE(holders.size(), conflicts ? 1 : 0);
            if (!conflicts)
                continue;
            const PortHolder &holder = holders.first();
            QCOMPARE(holder.port, server.serverPort());
            QCOMPARE(holder.processId, std::optional(QCoreApplication::applicationPid()));
            QCOMPARE(holder.program, QStringLiteral("tst_platform"));
            QCOMPARE(holder.userId, std::optional<quint32>(getuid()));
            server.close();
            QVERIFY(ProcPortHolders().find({holder.port}, false).isEmpty());
        }
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

    void readsTheListOfSockets()
    {
        if constexpr (Q_BYTE_ORDER != Q_LITTLE_ENDIAN)
            QSKIP("The rows are of a little-endian computer");
        const QList<ListeningSocket> found{{.port = 17731, .userId = 1000, .inode = "4711"}};
        const QByteArray rest = " 00000000:00000000 00:00000000 00000000  1000  0 4711 1 0";
        const QByteArray none(32, '0');
        const std::pair<QByteArray, bool> rows[] = {{"   0: 0100007F:4543 00000000:0000 0A" + rest, true},
            {"   0: " + none + ":4543 " + none + ":0000 0A" + rest, true}, // on both kinds of addresses
            {"   0: 0100007F:4543 0100007F:9999 01" + rest, false}, // only connected
            {"   0: 0100007F:4545 00000000:0000 0A" + rest, false}, // another port
            {"   0: 00000000000000000000000001000000:4543 " + none + ":0000 0A" + rest, false}, // only ::1
            {"  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode", false},
            {"   0: 0100007F:4543 00000000:0000 0A", false}, {"", false}};
        for (const auto &[line, isFound] : rows) {
            const InRow row(line);
            QCOMPARE(listeningSockets("heading\n" + line + '\n', {17731, 17732}),
                isFound ? found : QList<ListeningSocket>());
        }
    }

    void namesAProgramWithoutItsSecrets()
    {
        const std::pair<QByteArray, const char *> rows[]
            = {{"/opt/a/node /opt/a/zemrak-local-print.mjs run", "node zemrak-local-print.mjs"},
                {"/usr/bin/python3 /srv/shop.py --password=x", "python3 shop.py"}, {"nginx: master", "nginx:"},
                {"/usr/sbin/nginx --token=secret.js", "nginx"}, {"node --require=secret.js", "node"}, {"", ""},
                {"/bin/a\nforged\x1b[31m", "a forged[31m"}};
        for (const auto &[commandLine, name] : rows)
            QCOMPARE(programName(QByteArray(commandLine).replace(' ', '\0')), QString::fromLatin1(name));
    }
};

ZEMRAK_TEST(portholders, PortHoldersTest, QCoreApplication)
#include "tst_portholders.moc"
