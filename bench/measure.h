#pragma once

#include <chrono>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace zemrak::bench {

/// Runs from its construction.
class Stopwatch
{
public:
    [[nodiscard]] double microseconds() const
    {
        return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - m_start).count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

/// How often a measurement is repeated: until `most` or until `time` is over, but `least` times at any rate.
struct Effort
{
    int least;
    int most;
    std::chrono::milliseconds time;
};

void repeat(const Effort &effort, const std::function<void()> &sample);

/// Of an even number, the upper one of the two in the middle.
[[nodiscard]] double median(std::vector<double> samples);

/// Prints a Markdown table line by line, as the results come.
class Table
{
public:
    explicit Table(std::initializer_list<std::string> headings);

    void row(const std::vector<std::string> &cells) const;

private:
    std::vector<std::size_t> m_widths;
};

[[nodiscard]] std::string number(double value, int decimals = 0);

/// Whether the one argument "--quick" was given; ends the program when anything else was.
[[nodiscard]] bool isQuick(int argc, char **argv);

} // namespace zemrak::bench
