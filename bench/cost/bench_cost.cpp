// What the application costs the computer it runs on, from outside: beside a bare Qt tray program and a bare loop that
// make the same requests, measured in turn with it, or at the same time where the time itself is what is shared.

#include "stage.h"

#include "measure.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <set>

namespace zemrak::bench {

namespace {

namespace fs = std::filesystem;

/// How often, and for how long.
struct Plan
{
    int starts;
    int memories;
    int reopenings; ///< after each first opening
    double idleSeconds;
    double stateSeconds;
    int openings; ///< for growth
    int looks; ///< at what has grown
};
constexpr Plan fullPlan{15, 5, 3, 60, 20, 500, 10};
constexpr Plan quickPlan{5, 2, 2, 10, 6, 50, 5};

constexpr double settleSeconds = 5; // two polls, and what is put off at the start
constexpr double pollsPerSecond = 0.5;

class Bench
{
public:
    Bench(const Plan &plan, const fs::path &bundle, const fs::path &tools, const fs::path &folder)
        : m_plan(plan)
        , m_stage(bundle, tools, folder)
    {
    }

    void run(const std::set<std::string> &parts)
    {
        const auto wanted = [&parts](const char *part) { return parts.empty() || parts.contains(part); };
        // The first start of all makes the certificates and fills the caches of the disk.
        Program first = m_stage.launchApplication();
        m_stage.end(first);
        std::puts("Medians. MB of proportional memory (Pss), each program alone.\n");
        const Table table{"                                  ", "application", "Qt tray", "  loop", " ratio", "   aim"};
        m_table = &table;
        if (wanted("start"))
            measureStarts();
        if (wanted("memory"))
            measureMemory();
        if (wanted("idle"))
            measureIdle();
        if (wanted("poll"))
            measureStates();
        if (wanted("growth"))
            measureGrowth();
    }

private:
    using Program = std::unique_ptr<Child>;

    void measureStates()
    {
        for (const StateKind &kind : {StateKind{"small", 0, false}, StateKind{"100 KB", 100'000, false},
                 StateKind{"1 MB", 1'000'000, false}, StateKind{"1 MB, changing", 1'000'000, true}})
            measureState(kind);
    }

    void row(const std::string &what, double application, double tray, double loop, const char *aim, int decimals)
    {
        const auto cell = [decimals](double value) { return value < 0 ? std::string() : number(value, decimals); };
        m_table->row({what + std::string(34 - std::min<std::size_t>(34, what.size()), ' '), cell(application),
            cell(tray), cell(loop), tray > 0 ? number(application / tray, 2) : std::string(), aim});
    }

    void measureStarts()
    {
        std::vector<double> floor;
        std::vector<double> icon;
        std::vector<double> service;
        std::vector<double> floorCpu;
        std::vector<double> iconCpu;
        for (int i = 0; i < m_plan.starts; ++i) {
            {
                const Start tray = m_stage.launchFloor();
                floor.push_back(tray.iconMs);
                floorCpu.push_back(tray.cpuMs);
            }
            Start application = m_stage.launch(m_stage.subjects().application());
            icon.push_back(application.iconMs);
            iconCpu.push_back(application.cpuMs);
            service.push_back(application.serviceMs);
            m_stage.end(application.program);
        }
        row("start to tray icon, ms", median(icon), median(floor), -1, "<= 1.5", 1);
        row("  processor until then, ms", median(iconCpu), median(floorCpu), -1, "", 1);
        row("start to service launched, ms", median(service), -1, -1, "", 1);
    }

    void measureMemory()
    {
        std::vector<double> floor;
        std::vector<double> loop;
        std::vector<double> never;
        std::vector<double> open;
        std::vector<double> closed;
        std::vector<double> firstFrame;
        std::vector<double> firstCpu;
        std::vector<double> reopening;
        std::vector<double> reopeningCpu;
        for (int i = 0; i < m_plan.memories; ++i) {
            {
                const Program service = m_stage.subjects().service();
                m_stage.awaitService();
                Program bare = m_stage.subjects().loopFloor();
                Program tray = m_stage.launchFloor().program;
                m_stage.rest(settleSeconds);
                floor.push_back(tray->memory().pssMb);
                loop.push_back(bare->memory().pssMb);
            }
            Program application = m_stage.launchApplication();
            m_stage.rest(settleSeconds);
            never.push_back(application->memory().pssMb);
            const Opening first = m_stage.openWindow(*application);
            firstFrame.push_back(first.ms);
            firstCpu.push_back(first.cpuMs);
            m_stage.rest(settleSeconds);
            open.push_back(application->memory().pssMb);
            m_stage.closeWindow();
            m_stage.rest(2);
            for (int k = 0; k < m_plan.reopenings; ++k) {
                const Opening again = m_stage.openWindow(*application);
                reopening.push_back(again.ms);
                reopeningCpu.push_back(again.cpuMs);
                m_stage.rest(0.5);
                m_stage.closeWindow();
                m_stage.rest(2);
            }
            m_stage.rest(settleSeconds);
            closed.push_back(application->memory().pssMb);
            m_stage.end(application);
        }
        row("first frame of the window, ms", median(firstFrame), -1, -1, "<= 250", 1);
        row("  processor until then, ms", median(firstCpu), -1, -1, "", 1);
        row("reopening the window, ms", median(reopening), -1, -1, "<= 120", 1);
        row("  processor until then, ms", median(reopeningCpu), -1, -1, "", 1);
        row("memory, never opened", median(never), median(floor), median(loop), "<= 1.3", 1);
        row("memory, open", median(open), median(floor), median(loop), "", 1);
        row("memory, closed again", median(closed), median(floor), median(loop), "<= 2.0", 1);
        row("memory returned on closing", median(open) - median(closed), -1, -1, "", 1);
    }

    struct Idle
    {
        std::array<double, 3> cpu; ///< ms a minute: application, tray, loop
        std::array<double, 3> wakeUps; ///< a second
    };

    // All at the same time: what else the computer does meanwhile weighs on all alike.
    Idle idle(const Program &application, double seconds)
    {
        const Program tray = m_stage.subjects().trayFloor();
        const Program loop = m_stage.subjects().loopFloor();
        m_stage.rest(settleSeconds);
        const std::array<const Child *, 3> all{application.get(), tray.get(), loop.get()};
        std::array<Usage, 3> before;
        for (std::size_t i = 0; i < all.size(); ++i)
            before.at(i) = all.at(i)->usage();
        m_stage.rest(seconds);
        Idle result{};
        for (std::size_t i = 0; i < all.size(); ++i) {
            const Usage after = all.at(i)->usage();
            result.cpu.at(i) = (after.cpuMs - before.at(i).cpuMs) * 60 / seconds;
            result.wakeUps.at(i) = wakeUpsBetween(before.at(i), after) / seconds;
        }
        return result;
    }

    void printIdle(const std::string &when, const Idle &idle, const char *aim)
    {
        row("processor, " + when + ", ms/min", idle.cpu[0], idle.cpu[1], idle.cpu[2], aim, 1);
        row("wake-ups, " + when + ", 1/s", idle.wakeUps[0], idle.wakeUps[1], idle.wakeUps[2], aim, 2);
    }

    void measureIdle()
    {
        Program application = m_stage.launchApplication();
        printIdle("never opened", idle(application, m_plan.idleSeconds), "<= 1.3");
        m_stage.openWindow(*application);
        printIdle("open", idle(application, m_plan.idleSeconds / 2), "");
        m_stage.closeWindow();
        printIdle("closed again", idle(application, m_plan.idleSeconds), "<= 1.3");
        m_stage.end(application);
    }

    void measureState(const StateKind &kind)
    {
        Program application = m_stage.launch(m_stage.subjects().applicationWith(kind)).program;
        const Idle cost = idle(application, m_plan.stateSeconds);
        constexpr double perPoll = 60 * pollsPerSecond;
        row(std::string("poll, ") + kind.name + ", ms", cost.cpu[0] / perPoll, cost.cpu[1] / perPoll,
            cost.cpu[2] / perPoll, kind.changes ? "" : "<= 1.3", 2);
        row(std::string("poll, ") + kind.name + ", wake-ups", cost.wakeUps[0] / pollsPerSecond,
            cost.wakeUps[1] / pollsPerSecond, cost.wakeUps[2] / pollsPerSecond, kind.changes ? "" : "<= 1.3", 1);
        m_stage.end(application);
    }

    void measureGrowth()
    {
        Program application = m_stage.launchApplication();
        std::printf("\nOpened and closed %d times\n\n", m_plan.openings);
        const Table table{"openings", "  Pss MB", "private MB", "threads", "  files"};
        for (int i = 1; i <= m_plan.openings; ++i) {
            m_stage.openWindow(*application);
            m_stage.rest(0.02);
            m_stage.closeWindow();
            m_stage.rest(0.02);
            if (i == 1 || i % (m_plan.openings / m_plan.looks) == 0) {
                m_stage.rest(3);
                const Memory memory = application->memory();
                table.row({number(i), number(memory.pssMb, 1), number(memory.privateMb, 1),
                    number(static_cast<double>(application->threads())),
                    number(static_cast<double>(application->files()))});
            }
        }
        m_stage.end(application);
    }

    Plan m_plan;
    Stage m_stage;
    const Table *m_table = nullptr;
};

} // namespace

} // namespace zemrak::bench

int main(int argc, char **argv)
{
    using namespace zemrak::bench;

    const std::set<std::string> known{"start", "memory", "idle", "poll", "growth"};
    bool quick = false;
    std::set<std::string> parts;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument != "--quick" && !known.contains(argument))
            giveUp("Usage: bench_cost [--quick] [start|memory|idle|poll|growth]...");
        if (argument == "--quick")
            quick = true;
        else
            parts.insert(argument);
    }
    if (!Subjects::portIsFree())
        giveUp("Port 17731 is in use; end the copy that runs before measuring");
    std::string folder = std::filesystem::temp_directory_path() / "zemrak-bench-XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr)
        giveUp("No folder to work in");
    Bench(quick ? quickPlan : fullPlan, ZEMRAK_BUNDLE, std::filesystem::canonical(argv[0]).parent_path(), folder)
        .run(parts);
    std::filesystem::remove_all(folder);
    return 0;
}
