#pragma once

#include "app/agent.h"
#include "support/httpserver.h"
#include "support/manualclock.h"
#include "support/testhost.h"
#include "support/wiredata.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

namespace zemrak::test {

/// An Agent on a computer that does nothing of itself, and a local server in place of the print service.
struct Application
{
    QTemporaryDir home;
    FakeBundle files;
    ManualClock clock;
    HttpServer server;
    UserDefaults defaults{home.filePath(QStringLiteral("settings.ini"))};
    TestHost computer;
    Agent agent{{.bundle = files.bundle(), .configDir = files.configDir(), .port = server.port()}, defaults, clock,
        computer.forAgent()};
    QJsonObject state = storedObject(QStringLiteral("wire/state.json")); ///< what the service answers
    QByteArray answer = "{}"; ///< to everything else but the alerts
    QByteArray held; ///< requests to this target are not answered
    QPointer<QTcpSocket> unanswered; ///< the last of them

    Application()
    {
        files.writeToken("t");
        state.insert(QStringLiteral("httpPort"), server.port());
        server.answerWith([this](const HttpRequest &request, QTcpSocket &socket) {
            if (request.target == held)
                unanswered = &socket;
            else if (request.target.startsWith("/admin/state"))
                socket.write(HttpServer::response(toJson(state)));
            else if (request.target == "/admin/alerts")
                socket.write(HttpServer::response(storedBody(QStringLiteral("wire/alerts.json"))));
            else
                socket.write(HttpServer::response(answer));
        });
    }

    /// Has the agent see `state`, which is not what it saw last.
    void poll()
    {
        QSignalSpy changed(&agent, &Agent::stateChanged);
        agent.refresh();
        QVERIFY(changed.wait());
    }
    [[nodiscard]] qsizetype sentTo(const QByteArray &target) const { return server.requestsTo(target).size(); }
};

} // namespace zemrak::test
