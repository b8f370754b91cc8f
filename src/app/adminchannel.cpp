#include "app/adminchannel.h"

#include "app/admintoken.h"
#include "app/onceonlybody.h"

#include <QJsonDocument>
#include <QNetworkProxy>
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
    // Aborted requests must not call back into this object.
    for (QNetworkReply *reply : m_network.findChildren<QNetworkReply *>())
        reply->disconnect(this);
}

bool AdminChannel::hasToken() const
{
    return readAdminToken(m_tokenFile).has_value();
}

void AdminChannel::get(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done)
{
    const std::optional<QNetworkRequest> request = requestFor(path);
    track(request ? m_network.get(*request) : nullptr, timeout, context, std::move(done));
}

void AdminChannel::post(const QString &path, const std::optional<QJsonObject> &body, std::chrono::milliseconds timeout,
    QObject *context, Answered done)
{
    const std::optional<QNetworkRequest> request = requestFor(path);
    track(request ? sendBody(*request, body) : nullptr, timeout, context, std::move(done));
}

std::optional<QNetworkRequest> AdminChannel::requestFor(const QString &path) const
{
    if (m_port < 1 || m_port > 65535)
        return std::nullopt;
    QNetworkRequest request = plainRequest(QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path)));
    if (const std::optional<QByteArray> token = readAdminToken(m_tokenFile))
        request.setRawHeader("X-Zemrak-Admin", token->isNull() ? QByteArray("") : *token);
    return request;
}

QNetworkReply *AdminChannel::sendBody(QNetworkRequest request, const std::optional<QJsonObject> &object)
{
    const QByteArray bytes = object ? QJsonDocument(*object).toJson(QJsonDocument::Compact) : QByteArray();
    auto body = std::make_unique<OnceOnlyBody>(bytes);
    if (object)
        request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/json"));
    request.setHeader(QNetworkRequest::ContentLengthHeader, bytes.size());
    request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    QNetworkReply *reply = m_network.post(request, body.get());
    body.release()->setParent(reply);
    return reply;
}

void AdminChannel::track(QNetworkReply *reply, std::chrono::milliseconds timeout, QObject *context, Answered done)
{
    if (context == nullptr)
        context = this;
    if (reply == nullptr) {
        if (done)
            QTimer::singleShot(0, context, [done = std::move(done)] { done(std::nullopt); });
        return;
    }
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
            done(answered ? Answer(std::move(exchange->body)) : std::nullopt);
        });
}

} // namespace zemrak
