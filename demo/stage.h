#pragma once

#include "app/agent.h"
#include "app/mainwindow.h"
#include "demo/situations.h"
#include "host/userdefaults.h"
#include "platform/platform.h"
#include "support/httpserver.h"
#include "support/testhost.h"

#include <QTemporaryDir>

namespace zemrak::test {

/// The application without its service: a real Agent that asks a local server, which answers as the situation says.
/// Its settings are its own, with the first-run wizard done.
class Stage
{
public:
    explicit Stage(Clock &clock);

    /// From now on the service answers so; waits until the agent has seen it, for a few seconds at most. False: it did
    /// not. Needs a running event loop's thread.
    bool enter(const Situation &situation);
    bool enter(const QString &situationName);

    [[nodiscard]] Agent &agent() { return m_agent; }
    [[nodiscard]] UserDefaults &defaults() { return m_defaults; }
    [[nodiscard]] TestHost &host() { return m_host; }
    [[nodiscard]] HttpServer &server() { return m_server; }
    [[nodiscard]] MainWindowServices services()
    {
        return {m_agent, m_defaults, m_clock, &platform::makeAppearanceSettings};
    }

private:
    Clock &m_clock;
    QTemporaryDir m_folder;
    UserDefaults m_defaults;
    FakeBundle m_files;
    HttpServer m_server;
    TestHost m_host;
    Agent m_agent;
};

} // namespace zemrak::test
