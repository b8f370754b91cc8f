#pragma once

#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QString>

#include <optional>

namespace zemrak::soak {

/// The private commands of a service on its usual port. Each call turns the event loop until it is answered.
class AdminLink
{
public:
    /// `tokenFile`: where the service keeps the secret, which each of its lives makes anew.
    explicit AdminLink(QString tokenFile);

    /// Null when the service does not answer, or refuses.
    [[nodiscard]] std::optional<QJsonObject> get(const QString &path);
    [[nodiscard]] std::optional<QJsonObject> post(const QString &path, const QJsonObject &body);

private:
    [[nodiscard]] QNetworkRequest request(const QString &path) const;
    [[nodiscard]] static std::optional<QJsonObject> answerOf(QNetworkReply *reply);

    QString m_tokenFile;
    QNetworkAccessManager m_network;
};

} // namespace zemrak::soak
