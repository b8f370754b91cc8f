// What a twin is asked, and what it says.

#include "shop.h"
#include "support/testmain.h"

#include <sys/socket.h>

using namespace zemrak;
using namespace zemrak::test;
using namespace zemrak::twin;

class DialogueTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void questionsOnArrival()
    {
        for (const auto &[knob, answer] : {// to DLE EOT 1, 2, 3, 4
                 std::pair("paper=ok", "12121212"), std::pair("paper=low", "1212121e"),
                 std::pair("paper=out", "1a32127e"), std::pair("cover=open", "1a161212"),
                 std::pair("button=offline", "1a121212"), std::pair("error=cutter", "1a521a12"),
                 std::pair("error=fatal", "1a523212"), std::pair("drawer=open", "16121212"),
                 std::pair("answers=out-of-paper", "1a32127e")}) {
            const InRow row(knob);
            Shop shop({QString::fromLatin1(knob)});
            const auto socket = shop.connect();
            socket->write(hex("100401100402100403100404"));
            QCOMPARE(answers(*socket, 4), QByteArray(answer));
            QCOMPARE(shop.receipts(), 0);
            // Nothing to print: neither it nor its end keeps anybody waiting, whatever the printer's state.
            socket->disconnectFromHost();
            QTRY_COMPARE(shop.printer().openLines(), 0);
        }
    }

    void theTruthIsTold()
    {
        Shop shop;
        const auto socket = shop.connect();
        socket->write(hex("1d7201") + hex("1d7202") + hex("1d4901") + hex("1d4943"));
        QCOMPARE(answers(*socket, 15), QByteArray("0000205f") + QByteArray("paper-twin").toHex() + "00");
        socket->write(hex("1d61ff"));
        QCOMPARE(answers(*socket, 4), QByteArray("1000000f"));
        shop.turn("cover=open");
        QCOMPARE(answers(*socket, 4), QByteArray("3800000f"));
        shop.turn("paper=out");
        QCOMPARE(answers(*socket, 4), QByteArray("38000f0f"));
        shop.turn("cover=closed");
        shop.turn("paper=ok");
        QCOMPARE(answers(*socket, 8), QByteArray("18000f0f1000000f"));
        shop.turn("drawer=open");
        QCOMPARE(answers(*socket, 4), QByteArray("1400000f"));
        // ESC @ ends it, and function 49 tells of the next stop.
        socket->write(hex("1b40")
            + hex("1d284803003130"
                  "01"));
        QTRY_COMPARE(shop.journal().printedBytes(), 25);
        shop.turn("error=cutter");
        QCOMPARE(answers(*socket, 3), QByteArray("372300"));
        socket->write(hex("100501"));
        QTRY_COMPARE(shop.printer().knobs()[Knob::Error], int(ErrorNone));
    }

    void confirmationsComeAfterThePaper()
    {
        Shop shop;
        QVERIFY(shop.printer().setKnobsLater(6, {{QStringLiteral("paper"), QStringLiteral("out")}}));
        const auto socket = shop.connect();
        socket->write("Hello\nWorld\n" + hex("1d28480600303041424344"));
        QTRY_COMPARE(shop.printer().knobs()[Knob::Paper], int(PaperOut));
        QCOMPARE(shop.journal().printedBytes(), 6);
        QCOMPARE(shop.printer().currentRows(), 30);
        socket->write(hex("100404"));
        QCOMPARE(answers(*socket, 1), QByteArray("7e"));
        shop.turn("paper=ok");
        QCOMPARE(answers(*socket, 7), QByteArray("37224142434400"));
        socket->disconnectFromHost();
        QTRY_COMPARE(shop.receipts(), 1);
        QCOMPARE(shop.lines(1), (QStringList{QStringLiteral("Hello"), QStringLiteral("World")}));
    }

    void halfClosedLinesAreAnswered()
    {
        Shop shop({QStringLiteral("speed=2000")});
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), shop.place("port").toUShort());
        QVERIFY(QTest::qWaitFor([&] { return socket.state() == QAbstractSocket::ConnectedState; }));
        socket.write(QByteArray(200, 'x') + '\n' + hex("1d28480600303041424344"));
        QVERIFY(QTest::qWaitFor([&] { return socket.bytesToWrite() == 0; }));
        ::shutdown(static_cast<int>(socket.socketDescriptor()), SHUT_WR);
        QCOMPARE(answers(socket, 7), QByteArray("37224142434400"));
    }

    void wrongAnswers()
    {
        // To DLE EOT 4 and to GS r 1, with paper that runs low.
        for (const auto &[setting, expected] : {std::pair("realtime-only", "1e"), std::pair("all-well", "1200"),
                 std::pair("nonsense", "7e7e"), std::pair("silent", "")}) {
            const InRow row(setting);
            Shop shop({QStringLiteral("paper=low"), QStringLiteral("answers=") + QLatin1String(setting)});
            const auto socket = shop.connect();
            socket->write(hex("100404") + hex("1d7201") + "a\n");
            QTRY_COMPARE(shop.journal().printedBytes(), 5);
            const QByteArray wanted(expected);
            QCOMPARE(answers(*socket, wanted.size() / 2), wanted);
            QCOMPARE(shop.journal().toJson().value(QLatin1String("answers")).toInt(), wanted.size() / 2);
        }
    }

    void starStatus()
    {
        Shop shop({}, paper::Language::StarLine);
        const auto socket = shop.connect();
        socket->write(hex("1b0601"));
        QCOMPARE(answers(*socket, 9), QByteArray("238600000000000000"));
        socket->write(hex("1b1e6101"));
        QCOMPARE(answers(*socket, 9), QByteArray("238600000000000000"));
        socket->write("text\n" + hex("17"));
        QCOMPARE(answers(*socket, 9), QByteArray("238602000000000200"));
        shop.turn("paper=low");
        QCOMPARE(answers(*socket, 9), QByteArray("238600000004000200"));
        shop.turn("cover=open");
        QCOMPARE(answers(*socket, 9), QByteArray("238628000004000200"));
    }
};

ZEMRAK_TEST(dialogue, DialogueTest, QCoreApplication)
#include "tst_dialogue.moc"
