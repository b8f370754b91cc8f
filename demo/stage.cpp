#include "demo/stage.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

namespace zemrak::test {

namespace {

// The application follows the port a state names; here that is the server's own.
QByteArray withPort(const QByteArray &body, quint16 port)
{
    QJsonObject object = QJsonDocument::fromJson(body).object();
    if (object.contains(QStringLiteral("httpPort")))
        object.insert(QStringLiteral("httpPort"), port);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

Stage::Stage(Clock &clock)
    : m_clock(clock)
    , m_defaults(m_folder.filePath(QStringLiteral("settings.ini")))
    , m_agent({.bundle = m_files.bundle(), .configDir = m_files.configDir(), .port = m_server.port()}, m_defaults,
          clock, m_host.forAgent())
{
    m_files.writeToken("token");
    m_defaults.setBoolean(QLatin1String("onboardingDone"), true);
}

bool Stage::enter(const Situation &situation)
{
    Answers answers = situation.answers();
    for (QByteArray &body : answers)
        body = withPort(body, m_server.port());
    m_server.answerWith([answers](const HttpRequest &request, QTcpSocket &socket) {
        const auto answer = answers.constFind(request.target.split('?').first());
        if (answer != answers.cend())
            socket.write(HttpServer::response(*answer));
        else
            socket.write(HttpServer::response("{}", "503 Service Unavailable"));
    });
    m_server.forget();
    m_agent.refresh();
    const bool expected = answers.contains("/admin/state");
    return QTest::qWaitFor([&] {
        return (m_agent.state() != nullptr) == expected && m_server.requestsTo("/admin/alerts").size() > 0
            && m_server.requestsTo("/admin/state").size() > 0;
    });
}

bool Stage::enter(const QString &situationName)
{
    const Situation *situation = findSituation(situationName);
    return situation && enter(*situation);
}

} // namespace zemrak::test
