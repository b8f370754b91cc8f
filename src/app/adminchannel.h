#pragma once

#include "base/clock.h"
#include "host/printservice.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>
#include <QString>

#include <chrono>
#include <optional>

namespace zemrak {

/// HTTP to the print service at 127.0.0.1 and nowhere else, with the token it left in its folder. No proxy, redirect,
/// cookie or cache. Main thread only; never blocks.
class AdminChannel : public QObject, public PrintService
{
    Q_OBJECT

public:
    /// Port while the service has not said another one.
    static constexpr quint16 defaultPort = 17731;
    /// Bytes of an answer; a longer one counts as none.
    static constexpr qint64 longestAnswer = 64 * 1024 * 1024;

    AdminChannel(QString tokenFile, Clock &clock, quint16 port = defaultPort, QObject *parent = nullptr);
    ~AdminChannel() override;

    /// The port the service's state names. None: the one given at construction again. A number that is no port makes
    /// every request fail.
    void setPort(std::optional<qint64> port) { m_port = port.value_or(m_initialPort); }

    /// The service has left a token that can be read.
    [[nodiscard]] bool hasToken() const;

    /// The token file is read anew for each request; without one no token is sent. A null `context` stands for
    /// this object.
    void get(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done) override;
    void post(const QString &path, const std::optional<QJsonObject> &body, std::chrono::milliseconds timeout,
        QObject *context, Answered done) override;

private:
    [[nodiscard]] std::optional<QNetworkRequest> requestFor(const QString &path) const;
    [[nodiscard]] QNetworkReply *sendBody(QNetworkRequest request, const std::optional<QJsonObject> &body);
    void track(QNetworkReply *reply, std::chrono::milliseconds timeout, QObject *context, Answered done);

    QString m_tokenFile;
    Clock &m_clock;
    qint64 m_initialPort;
    qint64 m_port;
    QNetworkAccessManager m_network;
};

} // namespace zemrak
