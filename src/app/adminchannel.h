#pragma once

#include "base/clock.h"

#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

namespace zemrak {

/// One request to the service's admin API.
struct AdminRequest
{
    QString path; ///< begins with "/admin/"
    QByteArray method = "GET";
    std::optional<QJsonObject> body = {}; ///< none: no body is sent; a GET never has one
    std::chrono::milliseconds timeout = std::chrono::seconds(5); ///< from sending to the last byte of the answer
};

/// What came back: the body, whatever the HTTP status, or none when there was no complete answer in time.
using AdminAnswer = std::optional<QByteArray>;

/// The private line to the print service: HTTP to 127.0.0.1 and nowhere else, with the token it left in its folder.
/// No proxy, redirect, cookie or cache. What changes something is sent once at most; a GET whose connection breaks may
/// be asked again by the network layer. Main thread only; never blocks.
class AdminChannel : public QObject
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

    using Done = std::function<void(const AdminAnswer &answer)>;

    /// Sends `request`. `done` is called at most once, in a later turn of the event loop, and not at all when `context`
    /// is gone by then. The token file is read anew for each request; without one the request goes out bare.
    void request(const AdminRequest &request, QObject *context = nullptr, Done done = {});

private:
    [[nodiscard]] QNetworkReply *send(const AdminRequest &request);
    void track(QNetworkReply *reply, std::chrono::milliseconds timeout, QObject *context, Done done);

    QString m_tokenFile;
    Clock &m_clock;
    qint64 m_initialPort;
    qint64 m_port;
    QNetworkAccessManager m_network;
};

} // namespace zemrak
