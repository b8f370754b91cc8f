#include "stage.h"

namespace zemrak::bench {

namespace {

double msSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

Stage::Stage(
    const std::filesystem::path &bundle, const std::filesystem::path &tools, const std::filesystem::path &folder)
    : m_desktop(folder)
    , m_subjects(bundle, tools, folder, m_desktop)
{
}

Start Stage::launch(std::unique_ptr<Child> application)
{
    m_desktop.forgetTrayItem();
    Start start{.program = std::move(application)};
    m_desktop.waitFor("the start", [&] {
        if (start.iconMs == 0 && m_desktop.hasTrayItem()) {
            start.iconMs = msSince(start.program->startedAt());
            start.cpuMs = start.program->usage().cpuMs;
        }
        if (start.serviceMs == 0 && start.program->hasChild())
            start.serviceMs = msSince(start.program->startedAt());
        return start.iconMs > 0 && start.serviceMs > 0;
    });
    awaitService();
    return start;
}

Start Stage::launchFloor()
{
    m_desktop.forgetTrayItem();
    Start start{.program = m_subjects.trayFloor()};
    m_desktop.waitFor("the floor's icon", [this] { return m_desktop.hasTrayItem(); });
    start.iconMs = msSince(start.program->startedAt());
    start.cpuMs = start.program->usage().cpuMs;
    return start;
}

void Stage::end(std::unique_ptr<Child> &application)
{
    application.reset();
    m_desktop.waitFor("the service to end", [] { return !Subjects::serviceAnswers(); });
}

Opening Stage::openWindow(const Child &application)
{
    const double before = application.usage().cpuMs;
    const auto start = std::chrono::steady_clock::now();
    m_desktop.clickTrayItem();
    m_desktop.waitFor("the window", [this] { return m_desktop.isPainted(); });
    const double ms = msSince(start);
    return {ms, application.usage().cpuMs - before};
}

void Stage::closeWindow()
{
    m_desktop.closeWindow();
    m_desktop.waitFor("the window to close", [this] { return !m_desktop.isPainted(); });
}

void Stage::awaitService()
{
    m_desktop.waitFor("the service", [] { return Subjects::serviceAnswers(); });
}

} // namespace zemrak::bench
