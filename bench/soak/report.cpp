#include "soak/report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace zemrak::soak {

void Report::heading(const QString &text)
{
    std::printf("\n%s\n", qUtf8Printable(text));
}

void Report::say(const QString &what, const QString &value)
{
    std::printf("  %-44s %s\n", qUtf8Printable(what), qUtf8Printable(value));
    std::fflush(stdout);
}

void Report::aim(const QString &what, const QString &value, const QString &aim, bool met)
{
    std::printf("  %-44s %-34s aim %-20s %s\n", qUtf8Printable(what), qUtf8Printable(value), qUtf8Printable(aim),
        met ? "met" : "MISSED");
    std::fflush(stdout);
    m_met = m_met && met;
}

void Report::growth(const QString &process, const Figures &begin, const Figures &end, const Limits &limits)
{
    const auto change = [](qint64 from, qint64 to) {
        return QStringLiteral("%1 -> %2 (%3%4)")
            .arg(QString::number(from), QString::number(to), to < from ? QString() : QStringLiteral("+"),
                QString::number(to - from));
    };
    const auto line = [&](const char *what, qint64 from, qint64 to, qint64 most) {
        aim(process + QStringLiteral(": ") + QLatin1String(what), change(from, to),
            most == 0 ? QStringLiteral("no more") : QStringLiteral("+%1 at most").arg(most), to - from <= most);
    };
    // Other programs coming and going change what is shared, and with it this figure: it is told and not judged.
    say(process + QStringLiteral(": proportional memory, KiB"), change(begin.proportionalKiB, end.proportionalKiB));
    line("resident memory, KiB", begin.residentKiB, end.residentKiB, limits.memoryKiB);
    line("memory of its own, KiB", begin.ownKiB, end.ownKiB, limits.memoryKiB);
    line("open files", begin.files, end.files, 0);
    line("threads", begin.threads, end.threads, 0);
    line("bus connections", begin.connections, end.connections, 0);
    line("bus matches", begin.matches, end.matches, 0);
}

qint64 percentile(QList<qint64> values, int percent)
{
    std::sort(values.begin(), values.end());
    const double rank = std::ceil(static_cast<double>(values.size()) * percent / 100.0);
    return values.at(std::clamp<qsizetype>(static_cast<qsizetype>(rank) - 1, 0, values.size() - 1));
}

} // namespace zemrak::soak
