#include "soak/adminlink.h"

#include "soak/wait.h"

#include <QFile>
#include <QJsonDocument>
#include <QNetworkProxy>
#include <QNetworkReply>

#include <memory>

namespace zemrak::soak {

AdminLink::AdminLink(QString tokenFile)
    : m_tokenFile(std::move(tokenFile))
{
    m_network.setProxy(QNetworkProxy::NoProxy);
}

std::optional<QJsonObject> AdminLink::get(const QString &path)
{
    return answerOf(m_network.get(request(path)));
}

std::optional<QJsonObject> AdminLink::post(const QString &path, const QJsonObject &body)
{
    return answerOf(m_network.post(request(path), QJsonDocument(body).toJson(QJsonDocument::Compact)));
}

QNetworkRequest AdminLink::request(const QString &path) const
{
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(QStringLiteral("127.0.0.1"));
    url.setPort(17731);
    url.setPath(path);
    QNetworkRequest request(url);
    QFile token(m_tokenFile);
    if (token.open(QIODevice::ReadOnly))
        request.setRawHeader("X-Zemrak-Admin", token.readAll().trimmed());
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setRawHeader("Connection", "close"); // a link kept open would count among the service's files
    request.setTransferTimeout(5000);
    return request;
}

std::optional<QJsonObject> AdminLink::answerOf(QNetworkReply *reply)
{
    const std::unique_ptr<QNetworkReply> owned(reply);
    waitUntil([reply] { return reply->isFinished(); }, std::chrono::seconds(6));
    if (reply->error() != QNetworkReply::NoError)
        return std::nullopt;
    const QJsonDocument answer = QJsonDocument::fromJson(reply->readAll());
    return answer.isObject() ? std::optional(answer.object()) : std::nullopt;
}

} // namespace zemrak::soak
