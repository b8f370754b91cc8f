#include "app/adminchannel.h"

#include "app/admintoken.h"
#include "app/onceonlybody.h"

#include <QJsonDocument>
#include <QNetworkProxy>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>
#include <QUrl>

namespace zemrak {

namespace {

/// Collects one answer and gives it to its caller.
struct Exchange
{
    QByteArray body;
    std::unique_ptr<Timer> deadline;
    bool failed = false;
};

QNetworkRequest plainRequest(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setRawHeader("User-Agent", "Zemrak-Printer/" ZEMRAK_VERSION);
    request.setRawHeader("Accept", "application/json");
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

// An HTTP error status is an answer like any other; a broken connection or a broken protocol is none.
bool isAnswered(const QNetworkReply &reply)
{
    const QNetworkReply::NetworkError error = reply.error();
    if (!reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid())
        return false;
    return error == QNetworkReply::NoError || error == QNetworkReply::ProxyAuthenticationRequiredError // a bare 407
        || (error > QNetworkReply::UnknownProxyError && error != QNetworkReply::ContentReSendError
            && error != QNetworkReply::ProtocolFailure);
}

} // namespace

AdminChannel::AdminChannel(QString tokenFile, Clock &clock, quint16 port, QObject *parent)
    : QObject(parent)
    , m_tokenFile(std::move(tokenFile))
    , m_clock(clock)
    , m_initialPort(port)
    , m_port(port)
{
    m_network.setProxy(QNetworkProxy::NoProxy);
}

AdminChannel::~AdminChannel()
{
    // What is under way is dropped in silence.
    for (QNetworkReply *reply : m_network.findChildren<QNetworkReply *>())
        reply->disconnect(this);
}

bool AdminChannel::hasToken() const
{
    return readAdminToken(m_tokenFile).has_value();
}

void AdminChannel::request(const AdminRequest &request, QObject *context, Done done)
{
    QObject *const owner = context == nullptr ? this : context;
    if (QNetworkReply *reply = send(request))
        track(reply, request.timeout, owner, std::move(done));
    else if (done)
        QTimer::singleShot(0, owner, [done = std::move(done)] { done(std::nullopt); });
}

QNetworkReply *AdminChannel::send(const AdminRequest &request)
{
    if (m_port < 1 || m_port > 65535)
        return nullptr;
    QNetworkRequest outgoing
        = plainRequest(QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(request.path)));
    if (const std::optional<QByteArray> token = readAdminToken(m_tokenFile))
        outgoing.setRawHeader("X-Zemrak-Admin", token->isNull() ? QByteArray("") : *token);
    if (request.method == "GET")
        return m_network.get(outgoing);

    const QByteArray bytes = request.body ? QJsonDocument(*request.body).toJson(QJsonDocument::Compact) : QByteArray();
    auto body = std::make_unique<OnceOnlyBody>(bytes);
    if (request.body)
        outgoing.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/json"));
    outgoing.setHeader(QNetworkRequest::ContentLengthHeader, bytes.size());
    outgoing.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    QNetworkReply *reply = m_network.sendCustomRequest(outgoing, request.method, body.get());
    body.release()->setParent(reply);
    return reply;
}

void AdminChannel::track(QNetworkReply *reply, std::chrono::milliseconds timeout, QObject *context, Done done)
{
    auto exchange = std::make_shared<Exchange>();
    const auto fail = [reply, exchange = exchange.get()] {
        exchange->failed = true;
        reply->abort();
    };
    exchange->deadline = m_clock.makeTimer(Clock::Repeat::Once, fail);
    exchange->deadline->start(timeout);

    connect(reply, &QNetworkReply::readyRead, reply, [reply, exchange, fail] {
        if (exchange->body.size() + reply->bytesAvailable() > longestAnswer)
            fail();
        else
            exchange->body += reply->readAll();
    });
    connect(
        reply, &QNetworkReply::finished, this, [reply, exchange, context = QPointer(context), done = std::move(done)] {
            exchange->deadline->stop();
            exchange->body += reply->isOpen() ? reply->readAll() : QByteArray();
            reply->deleteLater();
            if (!done || !context)
                return;
            const bool answered = !exchange->failed && isAnswered(*reply);
            done(answered ? AdminAnswer(std::move(exchange->body)) : std::nullopt);
        });
}

} // namespace zemrak
