#include "child.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zemrak::bench {

namespace {

using namespace std::chrono_literals;

std::vector<char *> pointersTo(std::vector<std::string> &strings)
{
    std::vector<char *> pointers;
    for (std::string &each : strings)
        pointers.push_back(each.data());
    pointers.push_back(nullptr);
    return pointers;
}

// "NAME:   123 kB" of such a file.
double field(const std::string &file, const std::string &name)
{
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name + ":"))
            return std::strtod(line.c_str() + name.size() + 1, nullptr);
    }
    return 0;
}

std::size_t entries(const std::string &folder)
{
    std::error_code gone;
    const std::filesystem::directory_iterator all(folder, gone);
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

} // namespace

void giveUp(const std::string &why)
{
    std::fprintf(stderr, "%s\n", why.c_str());
    std::exit(1);
}

Child::Child(const std::vector<std::string> &command, const std::vector<std::string> &environment, Output output)
{
    std::vector<std::string> words = command;
    const std::vector<char *> arguments = pointersTo(words);
    std::vector<std::string> variables = environment;
    variables.insert(variables.end(), {"PATH=" + std::string(std::getenv("PATH")), "LANG=C.UTF-8"});
    int pipe[2] = {-1, -1};
    if (output == Output::Read && ::pipe2(pipe, O_CLOEXEC) != 0)
        giveUp("No pipe");
    const pid_t self = ::getpid();
    m_startedAt = std::chrono::steady_clock::now();
    m_pid = ::fork();
    if (m_pid < 0)
        giveUp("No process");
    if (m_pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != self)
            ::_exit(1);
        const int out = output == Output::Read ? pipe[1] : ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        ::dup2(out, STDOUT_FILENO);
        ::execvpe(arguments.front(), arguments.data(), pointersTo(variables).data());
        ::_exit(127);
    }
    if (output == Output::Read) {
        ::close(pipe[1]);
        m_output = pipe[0];
    }
}

Child::~Child()
{
    stop();
    if (m_output >= 0)
        ::close(m_output);
}

std::string Child::readLine()
{
    std::string line;
    char letter = 0;
    while (::read(m_output, &letter, 1) == 1 && letter != '\n')
        line += letter;
    if (line.empty())
        giveUp("A program that the bench needs did not start");
    return line;
}

void Child::stop()
{
    if (m_pid < 0)
        return;
    ::kill(m_pid, SIGTERM);
    const auto limit = std::chrono::steady_clock::now() + 8s;
    while (::waitpid(m_pid, nullptr, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > limit)
            ::kill(m_pid, SIGKILL);
        std::this_thread::sleep_for(2ms);
    }
    m_pid = -1;
}

std::string Child::proc(const std::string &name) const
{
    return "/proc/" + std::to_string(m_pid) + "/" + name;
}

bool Child::hasChild() const
{
    std::ifstream children(proc("task/" + std::to_string(m_pid) + "/children"));
    pid_t child = 0;
    return static_cast<bool>(children >> child);
}

Usage Child::usage() const
{
    Usage usage;
    clockid_t clock{};
    timespec used{};
    if (::clock_getcpuclockid(m_pid, &clock) != 0 || ::clock_gettime(clock, &used) != 0)
        giveUp("A measured program has ended by itself");
    usage.cpuMs = static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
    for (const auto &task : std::filesystem::directory_iterator(proc("task")))
        usage.wakeUps[static_cast<pid_t>(std::stol(task.path().filename()))]
            = static_cast<std::uint64_t>(field(task.path().string() + "/status", "voluntary_ctxt_switches"));
    return usage;
}

Memory Child::memory() const
{
    const std::string rollup = proc("smaps_rollup");
    constexpr double kbPerMb = 1024;
    return {
        field(rollup, "Pss") / kbPerMb, (field(rollup, "Private_Clean") + field(rollup, "Private_Dirty")) / kbPerMb};
}

std::size_t Child::threads() const
{
    return entries(proc("task"));
}

std::size_t Child::files() const
{
    return entries(proc("fd"));
}

double wakeUpsBetween(const Usage &before, const Usage &after)
{
    double sum = 0;
    for (const auto &[thread, count] : after.wakeUps) {
        const auto earlier = before.wakeUps.find(thread);
        sum += static_cast<double>(count - (earlier == before.wakeUps.end() ? 0 : earlier->second));
    }
    return sum;
}

} // namespace zemrak::bench
