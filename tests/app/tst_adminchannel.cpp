#include "app/adminchannel.h"
#include "app/admintoken.h"
#include "support/fakebundle.h"
#include "support/httpserver.h"
#include "support/manualclock.h"
#include "support/testmain.h"

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
    PrintService::Answer answer;
};

/// What came of a request; null: its callback was not called, or not as promised.
using Told = std::optional<PrintService::Answer>;
const Told notAnswered(std::in_place, std::nullopt);

Told answered(const QByteArray &body)
{
    return Told(std::in_place, body);
}

struct Asked
{
    QString path = QStringLiteral("/admin/state");
    bool changes = false; ///< a POST
    std::optional<QJsonObject> body = {};
    std::chrono::milliseconds timeout = PrintService::usualTimeout;
};

struct Fixture
{
    FakeBundle files;
    ManualClock clock;
    HttpServer server;
    AdminChannel channel{tokenFile(), clock, server.port()};

    [[nodiscard]] QString tokenFile() const { return files.configDir() + QStringLiteral("/admin.token"); }

    /// Asks and waits for the one callback, which comes later than from within the call.
    Told answerTo(const Asked &asked = {})
    {
        const auto outcome = ask(asked);
        const bool isOnce = outcome->calls == 0 && QTest::qWaitFor([&outcome] { return outcome->calls > 0; }, 20'000)
            && outcome->calls == 1;
        return isOnce ? Told(std::in_place, outcome->answer) : Told();
    }
    std::shared_ptr<Outcome> ask(const Asked &asked = {})
    {
        auto outcome = std::make_shared<Outcome>();
        const auto done = [outcome](const PrintService::Answer &answer) {
            ++outcome->calls;
            outcome->answer = answer;
        };
        if (asked.changes)
            channel.post(asked.path, asked.body, asked.timeout, nullptr, done);
        else
            channel.get(asked.path, asked.timeout, nullptr, done);
        return outcome;
    }
};

HttpServer::Answer raw(const QByteArray &bytes, bool thenClose = false)
{
    return [bytes, thenClose](const HttpRequest &, QTcpSocket &socket) {
        socket.write(bytes);
        if (thenClose)
            socket.disconnectFromHost();
    };
}

const Asked order{.path = QStringLiteral("/admin/test"),
    .changes = true,
    .body = QJsonObject{{QStringLiteral("printer"), QStringLiteral("p")}}};

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

    // Byte for byte, read anew for each request; nothing that could forge a header line.
    void tokenOfTheFile()
    {
        Fixture f;
        f.server.answerJson("{}");
        const auto sent = [&f] {
            f.server.forget();
            if (!f.answerTo(order))
                return QByteArray("no answer");
            const QByteArray head = f.server.requests().value(0).raw;
            const qsizetype at = head.indexOf("\r\nX-Zemrak-Admin: ");
            return at < 0 ? QByteArray() : head.mid(at + 18, head.indexOf("\r\n", at + 18) - at - 18);
        };
        QVERIFY(sent().isNull());
        struct Case
        {
            QByteArray file;
            QByteArray header;
        };
        for (const auto &[file, header] : {Case{"0123abcdef", "0123abcdef"}, Case{" \tab c \t", " \tab c \t"},
                 Case{"abc\n", "abc"}, Case{"abc \r\n", "abc "}, Case{"رمز", "رمز"}, Case{"", ""},
                 Case{"a\nX-Forged: 1", {}}, Case{"a\rb", {}}, Case{QByteArray("a\0b", 3), {}}, Case{"\xff\xfe", {}},
                 Case{QByteArray(4097, 'x'), {}}, Case{"a\n\n", {}}, Case{"good again", "good again"}}) {
            f.files.writeToken(file);
            const QByteArray found = sent();
            QCOMPARE(found, header);
            QVERIFY2(found.isNull() == header.isNull(), file.left(20).toPercentEncoding().constData());
        }
        f.files.removeToken();
        QCOMPARE(mkfifo(QFile::encodeName(f.tokenFile()).constData(), 0600), 0);
        QVERIFY(sent().isNull()); // and did not wait for a writer
    }

    void requestIsPlain()
    {
        Fixture f;
        f.server.answerWith(raw("HTTP/1.1 200 OK\r\nSet-Cookie: a=b\r\nCache-Control: max-age=600\r\n"
                                "ETag: \"1\"\r\nContent-Length: 2\r\n\r\n{}"));
        for (int i = 0; i < 3; ++i)
            QVERIFY(f.answerTo());
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
        QVERIFY(f.answerTo({.path = QStringLiteral("/admin/profile"), .changes = true, .body = body}));
        const HttpRequest &post = f.server.requests().first();
        QCOMPARE(post.method, QByteArray("POST"));
        QCOMPARE(post.header("Content-Type"), QByteArray("application/json"));
        QCOMPARE(QJsonDocument::fromJson(post.body).object(), body);
        QVERIFY(!post.body.contains('\n'));
    }

    void everyStatusIsAnAnswer()
    {
        Fixture f;
        f.files.writeToken("t");
        QList<std::pair<QByteArray, QByteArray>> answers{{HttpServer::response({}), {}},
            {"HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\nContent-Length: 3\r\n\r\n{1}", "{1}"},
            {"HTTP/1.1 302 Found\r\nLocation: /admin/elsewhere\r\nContent-Length: 4\r\n\r\nmove", "move"},
            {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n1\r\nc\r\n0\r\n\r\n", "abc"}};
        for (const char *status : {"400 Bad", "403 No", "404 No", "405 No", "407 No", "409 No", "413 No", "421 No",
                 "500 Oh", "503 Oh", "599 Odd"})
            answers.append({HttpServer::response("{\"error\":1}", status), "{\"error\":1}"});
        for (const auto &[response, body] : answers) {
            f.server.answerWith(raw(response));
            QVERIFY2(f.answerTo() == answered(body), response.constData());
        }
        QVERIFY(f.answerTo());
        QCOMPARE(f.server.requests().size(), answers.size() + 1); // no redirect followed, nothing asked again
    }

    void brokenAnswersAreNone()
    {
        for (const QByteArray &response : {QByteArray(), QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{"),
                 QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\n{\"a\""),
                 QByteArray("HTTP/1.1 200 OK\r\nContent-Le"), QByteArray("SSH-2.0-x\r\n\r\n"),
                 QByteArray(5000, '\x91')}) {
            Fixture f;
            f.server.answerWith(raw(response, true));
            QVERIFY2(f.answerTo(order) == notAnswered, response.left(60).constData());
        }
    }

    // A service that takes a print order and dies before it answers must not be given the order again.
    void orderIsNeverSentTwice()
    {
        Fixture f;
        const Asked bare{.path = QStringLiteral("/admin/discover/network"), .changes = true};
        for (const bool onUsedConnection : {false, true}) {
            for (const auto &[request, abruptly] :
                {std::pair(order, false), std::pair(order, true), std::pair(bare, false), std::pair(bare, true)}) {
                f.server.answerJson("{}");
                QVERIFY(!onUsedConnection || f.answerTo());
                f.server.forget();
                f.server.answerWith([abruptly = abruptly](const HttpRequest &, QTcpSocket &socket) {
                    abruptly ? socket.abort() : socket.close();
                });
                QVERIFY(f.answerTo(request) == notAnswered);
                f.server.answerJson("{}");
                QVERIFY(f.answerTo());
                QCOMPARE(f.server.requests().size(), 2);
            }
        }
    }

    void timeoutEndsTheRequest()
    {
        Fixture f;
        // Bytes that keep trickling in do not put the end off.
        f.server.answerWith(raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nx"));
        const auto outcome = f.ask({.path = QStringLiteral("/admin/scan"), .timeout = 25s});
        QTRY_COMPARE(f.server.requests().size(), 1);
        f.clock.advance(24999ms);
        QCoreApplication::processEvents();
        QCOMPARE(outcome->calls, 0);
        f.clock.advance(1ms);
        QTRY_COMPARE(outcome->calls, 1);
        QVERIFY(!outcome->answer);
        QTRY_COMPARE(f.clock.pending(), 0);
    }

    void answerHasALimit()
    {
        Fixture f;
        for (const qint64 size : {AdminChannel::longestAnswer, AdminChannel::longestAnswer + 1}) {
            f.server.answerWith([size](const HttpRequest &, QTcpSocket &socket) {
                socket.write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(size) + "\r\n\r\n");
                socket.write(QByteArray(size, ' '));
            });
            const auto answer = f.answerTo();
            QVERIFY(answer);
            QCOMPARE(*answer ? (*answer)->size() : -1, size == AdminChannel::longestAnswer ? size : -1);
        }
    }

    void portFollowsTheServiceAndRefusesNonsense()
    {
        Fixture f;
        HttpServer other;
        f.server.answerJson("{}");
        other.answerJson("{}");
        const auto told = [&f](std::optional<qint64> port) {
            f.channel.setPort(port);
            return f.answerTo();
        };
        QVERIFY(told(other.port()) == answered("{}"));
        for (const qint64 bad : {Q_INT64_C(0), Q_INT64_C(-1), Q_INT64_C(65536), std::numeric_limits<qint64>::max()})
            QVERIFY(told(bad) == notAnswered);
        QVERIFY(told(std::nullopt) == answered("{}"));
        QVERIFY(other.requests().size() == 1 && f.server.requests().size() == 1);
    }

    void nobodyIsCalledWhoIsGone()
    {
        Fixture f;
        int calls = 0;
        const auto count = [&calls](const PrintService::Answer &) { ++calls; };
        const QString path = QStringLiteral("/admin/state");
        {
            QObject context;
            f.channel.get(path, 5s, &context, count);
            AdminChannel shortLived(f.tokenFile(), f.clock, f.server.port());
            shortLived.get(path, 5s, nullptr, count);
            QTRY_COMPARE(f.server.requests().size(), 2);
        }
        f.clock.advance(10s);
        f.server.answerJson("{}");
        QVERIFY(f.answerTo());
        QCOMPARE(calls, 0);
    }
};

ZEMRAK_TEST(adminchannel, AdminChannelTest, QCoreApplication)
#include "tst_adminchannel.moc"
