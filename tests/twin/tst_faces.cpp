// The ways to a twin, and how it treats who comes by them.

#include "shop.h"
#include "support/testmain.h"

#include <QSignalSpy>

#include <fcntl.h>
#include <unistd.h>

using namespace zemrak;
using namespace zemrak::test;
using namespace zemrak::twin;

class FacesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesTakeTurns()
    {
        Shop shop({QStringLiteral("cover=open")});
        const auto one = shop.connect();
        QTRY_COMPARE(shop.printer().openLines(), 1);
        const auto two = shop.connect();
        one->write("one, first\n");
        two->write("two\n");
        QTRY_COMPARE(shop.journal().receivedBytes(), 15);
        two->write(hex("100401"));
        QCOMPARE(answers(*two, 1), QByteArray("1a"));
        two->disconnectFromHost();
        shop.turn("cover=closed");
        one->write("one, second\n");
        QTRY_COMPARE(shop.journal().receivedBytes(), 30);
        one->disconnectFromHost();
        QTRY_COMPARE(shop.receipts(), 2);
        QCOMPARE(shop.lines(1).size(), 2);
        QCOMPARE(shop.lines(2), QStringList{QStringLiteral("two")});
    }

    void doors()
    {
        Shop shop;
        const auto connects = [&shop] {
            const auto socket = shop.connect();
            QSignalSpy failed(socket.get(), &QTcpSocket::errorOccurred);
            socket->write(hex("100401"));
            if (answers(*socket, 1) == "12")
                return QStringLiteral("answers");
            return failed.isEmpty() ? QStringLiteral("silent") : socket->errorString();
        };
        QCOMPARE(connects(), QStringLiteral("answers"));
        shop.turn("connections=refuse");
        {
            const auto socket = shop.connect();
            QTRY_COMPARE(socket->error(), QAbstractSocket::ConnectionRefusedError);
        }
        shop.turn("connections=one-refuses");
        {
            const auto first = shop.connect();
            QTRY_COMPARE(shop.printer().openLines(), 1);
            const auto second = shop.connect();
            // Reset at once; Qt may take that for a connection that is still being made, and make it again.
            QTRY_VERIFY(shop.journal().toJson().value(QLatin1String("refused")).toInt() >= 1);
            QCOMPARE(shop.printer().openLines(), 1);
        }
        QTRY_COMPARE(shop.printer().openLines(), 0);
        shop.turn("connections=one-waits");
        {
            const auto first = shop.connect();
            QTRY_COMPARE(shop.printer().openLines(), 1);
            const auto second = shop.connect();
            QTRY_COMPARE(second->state(), QAbstractSocket::ConnectedState);
            second->write(hex("100401"));
            first->write(hex("100401"));
            QCOMPARE(answers(*first, 1), QByteArray("12"));
            QCOMPARE(second->bytesAvailable(), 0);
            first->disconnectFromHost();
            QCOMPARE(answers(*second, 1), QByteArray("12"));
        }
        shop.turn("connections=many");
        QCOMPARE(connects(), QStringLiteral("answers"));
    }

    void bytesStayWithTheSender()
    {
        Shop shop({QStringLiteral("reading=never")});
        const auto socket = shop.connect();
        QTRY_COMPARE(shop.printer().openLines(), 1);
        constexpr qsizetype size = 8 << 20; // more than the system keeps for a connection
        socket->write(QByteArray(size, '\n'));
        shop.turn("lumpEvery=1");
        shop.turn("reading=lumps");
        QTRY_VERIFY(shop.journal().receivedBytes() >= 4096);
        shop.turn("reading=never");
        const qint64 before = shop.journal().receivedBytes();
        QVERIFY(before < size);
        // Few more: each is a line of paper to be drawn.
        const qint64 end = before + 20'000;
        shop.turn(("closeAfter=" + QByteArray::number(end)).constData());
        shop.turn("reading=steady");
        QTRY_COMPARE(shop.printer().openLines(), 0);
        QCOMPARE(shop.journal().receivedBytes(), end);
    }

    void floodAndPower()
    {
        Shop shop({QStringLiteral("flood=100000"), QStringLiteral("cover=open")});
        const auto socket = shop.connect();
        socket->write("lost\n");
        QTRY_VERIFY(socket->bytesAvailable() > 1000);
        shop.turn("flood=0");
        QCOMPARE(shop.http("POST", QStringLiteral("/power"), "{}").first, 204);
        QTRY_COMPARE(socket->state(), QAbstractSocket::UnconnectedState);
        shop.turn("cover=closed");
        QTRY_COMPARE(shop.printer().openLines(), 0);
        QCOMPARE(shop.receipts(), 0);
    }

    void lpd()
    {
        Shop shop;
        const auto socket = shop.connect("lpdPort");
        const QByteArray data = "by LPD\n" + hex("1d5600");
        socket->write("\x02lp\n");
        QCOMPARE(answers(*socket, 1), QByteArray("00"));
        // In pieces, as they come from a network.
        const QByteArray rest = "\x02"
                                "4 cfA001x\nHxyz"
            + QByteArray(1, '\0') + "\x03" + QByteArray::number(data.size()) + " dfA001x\n" + data
            + QByteArray(1, '\0');
        for (const char byte : rest) {
            socket->write(&byte, 1);
            socket->flush();
        }
        QCOMPARE(answers(*socket, 4), QByteArray("00000000"));
        QTRY_COMPARE(shop.receipts(), 1);
        QCOMPARE(shop.lines(1), QStringList{QStringLiteral("by LPD")});
        const auto state = shop.connect("lpdPort");
        state->write("\x04lp\n");
        QVERIFY(QByteArray::fromHex(answers(*state, 10)).startsWith("paper-twin is ready"));
        const auto wrong = shop.connect("lpdPort");
        wrong->write("\x09huh\n");
        QCOMPARE(answers(*wrong, 1), QByteArray("01"));
    }

    void serial()
    {
        Shop shop;
        for (const char *text : {"first\n", "second\n"}) {
            const int device = ::open(shop.place("serial").toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
            QVERIFY(device >= 0);
            const QByteArray bytes = text + hex("100401");
            QCOMPARE(::write(device, bytes.constData(), static_cast<std::size_t>(bytes.size())), bytes.size());
            char answer = 0;
            QVERIFY(QTest::qWaitFor([&] { return ::read(device, &answer, 1) == 1; }));
            QCOMPARE(answer, '\x12');
            const int before = shop.receipts();
            ::close(device);
            QTRY_COMPARE(shop.receipts(), before + 1);
        }
        QCOMPARE(shop.lines(2), QStringList{QStringLiteral("second")});
    }

    void controlOverHttp()
    {
        Shop shop;
        QCOMPARE(shop.http("PATCH", QStringLiteral("/knobs"), R"({"paper":"low","speed":500})").first, 200);
        QCOMPARE(shop.printer().knobs()[Knob::Speed], 500);
        for (const char *wrong : {R"({"papr":"low"})", R"({"paper":"gone","speed":1})", R"({"speed":1.5})",
                 R"({"speed":-1})", R"({"afterBytes":-1})", "[]", "{"})
            QCOMPARE(shop.http("PATCH", QStringLiteral("/knobs"), wrong).first, 400);
        QCOMPARE(shop.printer().knobs()[Knob::Speed], 500);
        shop.turn("speed=0");
        const auto socket = shop.connect();
        socket->write("a\n" + hex("1b7f") + hex("1d5600") + hex("100404"));
        QTRY_COMPARE(shop.receipts(), 1);
        const QJsonObject status = shop.http("GET", QStringLiteral("/status")).second;
        QCOMPARE(status.value(QLatin1String("receiptCount")).toInt(), 1);
        const QJsonObject journal = status.value(QLatin1String("journal")).toObject();
        QCOMPARE(journal.value(QLatin1String("received")).toInt(), 10);
        QCOMPARE(journal.value(QLatin1String("connections")).toInt(), 1);
        QCOMPARE(journal.value(QLatin1String("questions")).toObject().value(QLatin1String("DLE EOT 4")).toInt(), 1);
        const QJsonObject receipt = shop.http("GET", QStringLiteral("/receipts/1.json")).second;
        QCOMPARE(receipt.value(QLatin1String("problems"))[0][QLatin1String("offset")].toInt(), 2);
        for (const char *name : {"receipt-0001.png", "receipt-0001.bin", "receipt-0001.json"})
            QVERIFY(QFile::exists(shop.folder.filePath(QStringLiteral("out/") + QLatin1String(name))));
        QCOMPARE(shop.http("GET", QStringLiteral("/receipts/2.json")).first, 404);
        QCOMPARE(shop.http("DELETE", QStringLiteral("/receipts")).first, 204);
        QCOMPARE(shop.receipts(), 0);
        // What a browser may send for another site without asking is not obeyed.
        QNetworkRequest plain(QUrl(QStringLiteral("http://127.0.0.1:%1/power").arg(shop.place("controlPort"))));
        plain.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("text/plain"));
        const std::unique_ptr<QNetworkReply> reply(shop.network.post(plain, QByteArray("{}")));
        QTRY_VERIFY(reply->isFinished());
        QCOMPARE(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 415);
    }
};

ZEMRAK_TEST(faces, FacesTest, QCoreApplication)
#include "tst_faces.moc"
