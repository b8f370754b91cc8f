#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace zemrak::bench {

/// Says why and ends the program with status 1; what it started ends with it.
[[noreturn]] void giveUp(const std::string &why);

/// What a process has used up since it started.
struct Usage
{
    double cpuMs = 0; ///< of all its threads, also of those that have ended
    std::map<pid_t, std::uint64_t> wakeUps = {}; ///< voluntary context switches of each thread
};

struct Memory
{
    double pssMb = 0; ///< proportional: of each page its part
    double privateMb = 0; ///< pages of this process alone
};

/// A process that ends with this object, and with this program whatever becomes of it.
class Child
{
public:
    enum class Output
    {
        Inherit, ///< standard error shows; standard output is dropped
        Read
    };

    /// Looks `command` up in the PATH; its environment is that path, the plain language and
    /// `environment`.
    Child(const std::vector<std::string> &command, const std::vector<std::string> &environment,
        Output output = Output::Inherit);
    ~Child();
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    /// Waits for a line of its standard output.
    [[nodiscard]] std::string readLine();
    /// Asks it to end, and waits for that.
    void stop();

    [[nodiscard]] std::chrono::steady_clock::time_point startedAt() const { return m_startedAt; }
    [[nodiscard]] bool hasChild() const;
    [[nodiscard]] Usage usage() const;
    [[nodiscard]] Memory memory() const;
    [[nodiscard]] std::size_t threads() const;
    [[nodiscard]] std::size_t files() const;

private:
    [[nodiscard]] std::string proc(const std::string &name) const;

    pid_t m_pid = -1;
    int m_output = -1;
    std::chrono::steady_clock::time_point m_startedAt;
};

/// Wake-ups between the two; those of a thread that ended in between are not known.
[[nodiscard]] double wakeUpsBetween(const Usage &before, const Usage &after);

} // namespace zemrak::bench
