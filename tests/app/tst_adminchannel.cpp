#include "app/adminchannel.h"
#include "app/admintoken.h"
#include "support/fakebundle.h"
#include "support/httpserver.h"
#include "support/manualclock.h"

#include <QFile>
#include <QJsonDocument>
#include <QTest>

#include <sys/stat.h>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

struct Outcome
{
    int calls = 0;
    AdminAnswer answer;
};

struct Fixture
{
    FakeBundle files;
    ManualClock clock;
    HttpServer server;
    AdminChannel channel{tokenFile(), clock, server.port()};

    [[nodiscard]] QString tokenFile() const { return files.configDir() + QStringLiteral("/admin.token"); }

    std::shared_ptr<Outcome> ask(const AdminRequest &request = {.path = QStringLiteral("/admin/state")})
    {
        auto outcome = std::make_shared<Outcome>();
        channel.request(request, nullptr, [outcome](const AdminAnswer &answer) {
            ++outcome->calls;
            outcome->answer = answer;
        });
        return outcome;
    }
};

HttpServer::Answer raw(const QByteArray &bytes, bool thenClose)
{
    return [bytes, thenClose](const HttpRequest &, QTcpSocket &socket) {
        socket.write(bytes);
        if (thenClose)
            socket.disconnectFromHost();
    };
}

} // namespace

class AdminChannelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A proxy of the environment must never see the token.
        qputenv("http_proxy", "http://127.0.0.1:1");
        qputenv("HTTP_PROXY", "http://127.0.0.1:1");
        qputenv("all_proxy", "socks5://127.0.0.1:1");
    }

    void tokenTravelsByteForByte_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("header");
        QTest::newRow("plain") << QByteArray("0123abcdef") << QByteArray("0123abcdef");
        QTest::newRow("blanks stay") << QByteArray(" \tab c \t") << QByteArray(" \tab c \t");
        QTest::newRow("line end of the file") << QByteArray("abc\n") << QByteArray("abc");
        QTest::newRow("DOS line end") << QByteArray("abc \r\n") << QByteArray("abc ");
        QTest::newRow("not only ASCII") << QByteArray("رمز") << QByteArray("رمز");
        QTest::newRow("empty") << QByteArray("") << QByteArray("");
    }
    void tokenTravelsByteForByte()
    {
        QFETCH(QByteArray, file);
        QFETCH(QByteArray, header);
        Fixture f;
        f.server.answerJson("{}");
        f.files.writeToken(file);
        const auto outcome = f.ask({.path = QStringLiteral("/admin/test"), .method = "POST", .body = QJsonObject{}});
        QTRY_COMPARE(outcome->calls, 1);
        const HttpRequest &request = f.server.requests().first();
        QVERIFY(request.raw.contains("\r\nX-Zemrak-Admin: " + header + "\r\n"));
        QCOMPARE(request.raw.count("X-Zemrak-Admin"), 1);
        QCOMPARE(request.body, QByteArray("{}"));
    }

    void badTokenFilesMeanNoHeader()
    {
        Fixture f;
        f.server.answerJson("{}");
        const auto headerSent = [&f] {
            f.server.forget();
            const auto outcome = f.ask();
            [&outcome] { QTRY_COMPARE(outcome->calls, 1); }();
            return f.server.requests().value(0).raw.contains("X-Zemrak-Admin");
        };
        QVERIFY(!headerSent());
        for (const QByteArray &bad : {QByteArray("a\nX-Forged: 1"), QByteArray("a\rb"), QByteArray("a\0b", 3),
                 QByteArray("\xff\xfe"), QByteArray(4097, 'x'), QByteArray("a\n\n")}) {
            f.files.writeToken(bad);
            QVERIFY2(!headerSent(), bad.left(20).toPercentEncoding().constData());
        }
        f.files.writeToken("good");
        QVERIFY(headerSent());
        f.files.removeToken();
        QCOMPARE(mkfifo(QFile::encodeName(f.tokenFile()).constData(), 0600), 0);
        QVERIFY(!headerSent()); // and did not wait for a writer
    }

    void tokenIsReadAnewEachTime()
    {
        Fixture f;
        f.server.answerJson("{}");
        for (const QByteArray &token : {QByteArray("one"), QByteArray("two")}) {
            f.files.writeToken(token);
            const auto outcome = f.ask();
            QTRY_COMPARE(outcome->calls, 1);
            QCOMPARE(f.server.requests().last().header("X-Zemrak-Admin"), token);
        }
    }

    void requestIsPlain()
    {
        Fixture f;
        f.server.answerWith(raw("HTTP/1.1 200 OK\r\nSet-Cookie: a=b\r\nCache-Control: max-age=600\r\n"
                                "ETag: \"1\"\r\nContent-Length: 2\r\n\r\n{}",
            false));
        for (int i = 0; i < 3; ++i) {
            const auto outcome = f.ask();
            QTRY_COMPARE(outcome->calls, 1);
        }
        QCOMPARE(f.server.requests().size(), 3); // none out of a cache
        for (const HttpRequest &request : f.server.requests()) {
            QCOMPARE(request.method, QByteArray("GET"));
            QCOMPARE(request.header("Host"), "127.0.0.1:" + QByteArray::number(f.server.port()));
            QVERIFY(request.header("Cookie").isNull() && request.header("If-None-Match").isNull());
            QVERIFY(request.header("Content-Type").isNull() && request.body.isEmpty());
        }

        f.server.forget();
        const QJsonObject body{{QStringLiteral("text"), QStringLiteral("كاشير")},
            {QStringLiteral("big"), Q_INT64_C(9007199254740993)}, {QStringLiteral("null"), QJsonValue()}};
        const auto outcome = f.ask({.path = QStringLiteral("/admin/profile"), .method = "POST", .body = body});
        QTRY_COMPARE(outcome->calls, 1);
        const HttpRequest &post = f.server.requests().first();
        QCOMPARE(post.method, QByteArray("POST"));
        QCOMPARE(post.header("Content-Type"), QByteArray("application/json"));
        QCOMPARE(QJsonDocument::fromJson(post.body).object(), body);
        QVERIFY(!post.body.contains('\n'));
    }

    void everyStatusIsAnAnswer_data()
    {
        QTest::addColumn<QByteArray>("response");
        QTest::addColumn<QByteArray>("body");
        const auto row = [](const char *name, const QByteArray &response, const QByteArray &body) {
            QTest::newRow(name) << response << body;
        };
        row("200 empty", HttpServer::response({}), {});
        row("401 with a challenge",
            "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\nContent-Length: 3\r\n\r\n{1}", "{1}");
        for (const char *status : {"400 Bad", "403 No", "404 No", "405 No", "407 No", "409 No", "413 No", "421 No",
                 "500 Oh", "503 Oh", "599 Odd"})
            row(status, HttpServer::response("{\"error\":1}", status), "{\"error\":1}");
        row("redirect", "HTTP/1.1 302 Found\r\nLocation: /admin/elsewhere\r\nContent-Length: 4\r\n\r\nmove", "move");
        row("chunked", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n1\r\nc\r\n0\r\n\r\n", "abc");
    }
    void everyStatusIsAnAnswer()
    {
        QFETCH(QByteArray, response);
        QFETCH(QByteArray, body);
        Fixture f;
        f.files.writeToken("t");
        f.server.answerWith(raw(response, false));
        const auto outcome = f.ask();
        QTRY_COMPARE(outcome->calls, 1);
        QVERIFY(outcome->answer);
        QCOMPARE(*outcome->answer, body);
        QTest::qWait(50);
        QCOMPARE(f.server.requests().size(), 1); // no redirect followed, nothing asked again
        QCOMPARE(outcome->calls, 1);
    }

    void brokenAnswersAreNone_data()
    {
        QTest::addColumn<QByteArray>("response");
        QTest::newRow("closed at once") << QByteArray();
        QTest::newRow("half a body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"a\":");
        QTest::newRow("half a chunk") << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\n{\"a\"");
        QTest::newRow("half a head") << QByteArray("HTTP/1.1 200 OK\r\nContent-Le");
        QTest::newRow("no HTTP") << QByteArray("SSH-2.0-x\r\n\r\n");
        QTest::newRow("garbage") << QByteArray(5000, '\x91');
    }
    void brokenAnswersAreNone()
    {
        QFETCH(QByteArray, response);
        Fixture f;
        f.server.answerWith(raw(response, true));
        const auto outcome = f.ask({.path = QStringLiteral("/admin/test"),
            .method = "POST",
            .body = QJsonObject{{QStringLiteral("printer"), QStringLiteral("p")}}});
        QTRY_COMPARE(outcome->calls, 1);
        QVERIFY(!outcome->answer);
    }

    // A service that takes a print order and dies before it answers must not be given the order again.
    void orderIsNeverSentTwice()
    {
        Fixture f;
        const AdminRequest order{.path = QStringLiteral("/admin/test"),
            .method = "POST",
            .body = QJsonObject{{QStringLiteral("printer"), QStringLiteral("p")}}};
        const AdminRequest bare{.path = QStringLiteral("/admin/discover/network"), .method = "POST"};
        for (const bool onUsedConnection : {false, true}) {
            for (const auto &[request, abruptly] :
                {std::pair(order, false), std::pair(order, true), std::pair(bare, false), std::pair(bare, true)}) {
                f.server.answerJson("{}");
                if (onUsedConnection) {
                    const auto before = f.ask();
                    QTRY_COMPARE(before->calls, 1);
                }
                f.server.forget();
                f.server.answerWith([abruptly = abruptly](const HttpRequest &, QTcpSocket &socket) {
                    abruptly ? socket.abort() : socket.close();
                });
                const auto outcome = f.ask(request);
                QTRY_COMPARE(outcome->calls, 1);
                QVERIFY(!outcome->answer);
                QTest::qWait(100);
                QCOMPARE(f.server.requests().size(), 1);
            }
        }
    }

    void timeoutEndsTheRequest()
    {
        Fixture f;
        // Bytes that keep trickling in do not put the end off.
        f.server.answerWith(raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nx", false));
        const auto outcome = f.ask({.path = QStringLiteral("/admin/scan"), .timeout = 25s});
        QTRY_COMPARE(f.server.requests().size(), 1);
        f.clock.advance(24999ms);
        QTest::qWait(50);
        QCOMPARE(outcome->calls, 0);
        f.clock.advance(1ms);
        QTRY_COMPARE(outcome->calls, 1);
        QVERIFY(!outcome->answer);
        QTest::qWait(50);
        QCOMPARE(outcome->calls, 1);
        QTRY_COMPARE(f.clock.pending(), 0);
    }

    void answerHasALimit()
    {
        Fixture f;
        const auto answerOf = [](qint64 size) {
            return [size](const HttpRequest &, QTcpSocket &socket) {
                socket.write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(size) + "\r\n\r\n");
                socket.write(QByteArray(size, ' '));
            };
        };
        f.server.answerWith(answerOf(AdminChannel::longestAnswer));
        auto outcome = f.ask();
        QTRY_COMPARE_WITH_TIMEOUT(outcome->calls, 1, 20'000);
        QVERIFY(outcome->answer);
        QCOMPARE(outcome->answer->size(), AdminChannel::longestAnswer);
        f.server.answerWith(answerOf(200 * 1000 * 1000));
        outcome = f.ask();
        QTRY_COMPARE_WITH_TIMEOUT(outcome->calls, 1, 20'000);
        QVERIFY(!outcome->answer);
    }

    void portFollowsTheServiceAndRefusesNonsense()
    {
        Fixture f;
        HttpServer other;
        f.server.answerJson("{}");
        other.answerJson("{}");
        f.channel.setPort(other.port());
        auto outcome = f.ask();
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(other.requests().size(), 1);
        for (const qint64 bad : {Q_INT64_C(0), Q_INT64_C(-1), Q_INT64_C(65536), std::numeric_limits<qint64>::max()}) {
            f.channel.setPort(bad);
            outcome = f.ask();
            QCOMPARE(outcome->calls, 0); // never from within the request itself
            QTRY_COMPARE(outcome->calls, 1);
            QVERIFY(!outcome->answer);
        }
        f.channel.setPort(std::nullopt);
        outcome = f.ask();
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(f.server.requests().size(), 1);
    }

    void nobodyIsCalledWhoIsGone()
    {
        Fixture f;
        int calls = 0;
        {
            QObject context;
            f.channel.request(
                {.path = QStringLiteral("/admin/state")}, &context, [&](const AdminAnswer &) { ++calls; });
            QTRY_COMPARE(f.server.requests().size(), 1);
        }
        f.server.answerJson("{}");
        const auto later = f.ask();
        QTRY_COMPARE(later->calls, 1);
        {
            AdminChannel shortLived(f.tokenFile(), f.clock, f.server.port());
            f.server.answerWith({});
            shortLived.request(
                {.path = QStringLiteral("/admin/state")}, nullptr, [&](const AdminAnswer &) { ++calls; });
            QTest::qWait(50);
        }
        f.clock.advance(10s);
        QTest::qWait(50);
        QCOMPARE(calls, 0);
    }
};

QTEST_GUILESS_MAIN(AdminChannelTest)
#include "tst_adminchannel.moc"
