#include "measure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace zemrak::bench {

void repeat(const Effort &effort, const std::function<void()> &sample)
{
    const auto end = std::chrono::steady_clock::now() + effort.time;
    for (int i = 0; i < effort.least || (i < effort.most && std::chrono::steady_clock::now() < end); ++i)
        sample();
}

double median(std::vector<double> samples)
{
    const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    return *middle;
}

Table::Table(std::initializer_list<std::string> headings)
{
    std::vector<std::string> rule;
    for (const std::string &heading : headings) {
        m_widths.push_back(heading.size());
        rule.push_back(std::string(heading.size() - 1, '-') + ':');
    }
    row(headings);
    row(rule);
}

void Table::row(const std::vector<std::string> &cells) const
{
    for (std::size_t i = 0; i < cells.size(); ++i)
        std::printf("| %*s ", static_cast<int>(m_widths.at(i)), cells[i].c_str());
    std::puts("|");
    std::fflush(stdout);
}

std::string number(double value, int decimals)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

bool isQuick(int argc, char **argv)
{
    if (argc == 1)
        return false;
    if (argc == 2 && std::strcmp(argv[1], "--quick") == 0)
        return true;
    std::fprintf(stderr, "Usage: %s [--quick]\n", argv[0]);
    std::exit(2);
}

} // namespace zemrak::bench
